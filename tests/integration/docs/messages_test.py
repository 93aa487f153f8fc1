"""Holds the operator's catalogue of messages against the sources: messages_test.py ROOT

What counts as a message that an operator can see:
 - every text that the library or the demo agent gives to a log function (TaTrace, TaDebug, TaDebugWithPara,
   TaException), whatever its level;
 - every other text of three words or more in the sources below FOLDERS: problems that are reported or thrown, and lines
   on the console. Shorter ones are parts of sentences that the longer ones tell.
What does not count stands in NOT_MESSAGES with its reason.

Each such text has to be a part of one text of the catalogue, which is what stands in backticks in the first column of
the tables of docs/operator/messages-*.md, with … for what varies. The other way round, each piece of a text of the
catalogue has to be a part of a text of the sources. Of log calls the second column holds channel and level.
"""

import re
import sys
from pathlib import Path

from source_texts import channel_of, constants_of, sources_below, texts_of

FOLDERS = ("agent", "logging", "request", "notification", "time", "standalone", "services", "orb/ssl", "orb/omniorb/src",
           "orb/omniorb/naming", "tools", "demo/agent")

# (file, beginning of the text, why it is no message); both are regular expressions.
NOT_MESSAGES = (
    (r"standalone/(settings_table|sample_file)\.cpp", r"", "told in configuration.md"),
    (r"tools/config_markdown\.cpp", r"", "is the page configuration.md"),
    (r".*", r"(usage: |SELECT |INSERT |PRAGMA |CREATE |DELETE |REPLACE |UPDATE |BEGIN )", "help, or a statement of SQL"),
    (r".*", r"-(ORB|SSL)\w+ ?[^ ]*$", "an option"),
    (r".*", r"%[A-Za-z]", "a form of a time"),
    (r"tools/(ssl/.*|certificates/.*)", r"[A-Z]\w+ .*|chmod |\.crl if|-SSLPrivateKeyPasswd|, (unless the agent|and replace the secret)",
     "the advice of qv_ssl, which it prints below the finding"),
    (r"tools/config_report\.cpp", r"taken from", "the summary of qv_config"),
    (r"tools/(qv_.*|ssl/qv_ssl)\.cpp", r"(Exit code|Times (of|are)|Checks |Shows |Keeps |Prints |Run it)", "help"),
    (r"demo/agent/options\.cpp", r"", "help"),
    (r"tools/usage\.cpp", r"^Print the version$", "help"),
    (r"services/notify/etcl/.*", r"", "told to the client that made the filter"),
    (r"services/notify/servants/(admin_parts|consumer_admin_servant|proxy_push_supplier|node_servant)\.(cpp|h)",
     r"(a mapping filter|a proxy for|add_filter)", "fills the gap in: a client asked for …"),
    (r"services/(naming|notify/program)/command_line\.cpp", r"[a-z]", "fills the gap in: The option … is not used: …"),
    (r"orb/ssl/service_config_file\.cpp", r"(parameters are|host names|the system supplies|TLS 1\.2|there is nothing)",
     "fills the gap in: … has no effect: …"),
    (r"services/naming/line_relay\.cpp", r"", "lines of omniNames that are looked for"),
    (r"services/naming/data_directory\.cpp", r"(Making|Bringing back|Keeping)", "fills the gap in: … failed: …"),
    (r"services/notify/store/(json_form|description|description_parts)\.cpp", r"(there is no|it is|a property|use of|\")",
     "fills the gap in: The stored description of a … is damaged: …"),
    (r"services/notify/store/event_tables\.cpp", r"is not what was written", "as above"),
    (r"demo/agent/(account_manager|attribute_manager|page_iterator|event_manager|ems_session_servant|iterator_directory|"
     r"common_servant|session_factory_servant|session_directory)\.cpp", r"[^\[]", "told to the OSS as the reason of an exception"),
    (r"demo/agent/core/event_plan\.cpp", r"", "texts of the demo's alarms"),
    (r"logging/(notify_log_record|oper_log_record|parameter_text|log_records|value_printer|secret_masking)\.cpp",
     r"[^\[]", "parts of records, see operation-records.md"),
    (r"notification/(alarm_record|event_types|notify_log_record)\.(cpp|h)", r"", "parts of records"),
    (r"tools/certificates/(identity|credential_files)\.cpp", r"(a |the (period|issuer|name|options|value) |an |dynamic |static )",
     "failures of OpenSSL while a trial set-up is made; qv_ssl prints them"),
    (r"(logging|agent)/.*", r"(the first field|realpath needs)", "an error in the program that never leaves it"),
    (r"agent/corbabaseagentconfig\.h", r"(Tarvo|-o )", "a default, see configuration.md"),
    (r"agent/command_lines\.cpp", r"[-/]", "part of a command line"),
    (r"logging/remote_address\.cpp", r"OTHER", "part of a record"),
    (r"standalone/http_post\.cpp", r"Content-Type", "goes to the collector"),
    (r"(orb/omniorb|services)/.*", r"(\* unix,ssl,tcp|SSL CA certificate location)", "of the ORB's own"),
    (r"services/(naming|notify)/.*", r"the (bindings|reference|process id) of the ",
     "fills the gap in: The file … for … cannot be written"),
    (r"request/aclmgr\.cpp", r"# this is", "the head of a file that is written"),
)

HELP_CALLS = re.compile(r"\b(add_option|add_flag|add_subcommand|footer|App|add_option_group|description)\b")
CATALOGUE = "docs/operator"


def is_sentence(said):
    return len(re.findall(r"[A-Za-z][A-Za-z']*", said)) >= 3 and " " in said


def exempt(text):
    if HELP_CALLS.search(text.statement) and text.file.startswith(("tools/", "demo/")):
        return True
    return any(re.fullmatch(file, text.file) and re.match(begin, text.said) for file, begin, _ in NOT_MESSAGES)


def messages(sources):
    """(text, channel) of everything that counts; channel as channel_of has it."""
    found = []
    for file, source in sources:
        constants = constants_of(source)
        for text in texts_of(file, source):
            channel = channel_of(text, constants)
            if channel and re.search(r"[A-Za-z]", text.said.replace("…", "")):
                found.append((text, channel))
            elif not channel and is_sentence(text.said) and not exempt(text):
                found.append((text, None))
    return found


def all_texts(sources):
    return [text.said for file, source in sources for text in texts_of(file, source)]


def catalogue(pages):
    """(page:line, text, second column) of each row whose first column holds a text in backticks."""
    rows = []
    for name, page in pages:
        for number, line in enumerate(page.splitlines(), 1):
            cells = line.split(" | ")
            row = re.fullmatch(r"\| (`+) ?(.+?) ?\1", cells[0])
            if row and len(cells) > 2:
                rows.append((f"{name}:{number}", " ".join(row.group(2).split()), cells[1].strip()))
    return rows


def pieces(said):
    return [piece.strip() for piece in said.split("…") if re.search(r"\w", piece)]


def missing_in_catalogue(found, rows):
    problems = []
    for text, channel in found:
        told = [row for row in rows if all(piece in row[1] for piece in pieces(text.said))]
        if not told:
            problems.append(f"{text.place()}: no message of the catalogue holds: {text.said}")
        elif channel and channel[1] is not None and \
                not any(row[2] == f"{channel[0]} {channel[1]}" for row in told):
            problems.append(f"{text.place()}: is logged to {channel[0]} {channel[1]}, but {told[0][0]} has: {told[0][2]}")
    return problems


def is_said(piece, texts):
    """Whether a source says it, whole or in parts that are put together at a colon or a semicolon."""
    if any(piece in text for text in texts):
        return True
    parts = [part.strip() for part in re.split(r"[:;,](?: |$)", piece) if re.search(r"\w", part)]
    return parts != [piece] and bool(parts) and all(is_said(part, texts) for part in parts)


def missing_in_sources(rows, texts):
    return [f"{place}: no source says: {piece}" for place, said, _ in rows for piece in pieces(said)
            if not is_said(piece, texts)]


def main(root):
    sources = [(name, source) for name, source in sources_below(root, FOLDERS) if "/bench/" not in name]
    pages = [(path.name, path.read_text(encoding="utf-8"))
             for path in sorted((Path(root) / CATALOGUE).glob("messages-*.md"))]
    found = messages(sources)
    rows = catalogue(pages)
    problems = missing_in_catalogue(found, rows) + missing_in_sources(rows, all_texts(sources))
    for problem in problems:
        print(problem)
    print(f"{len(found)} texts of the sources, {len(rows)} messages of the catalogue, {len(problems)} problems")
    if not found or not rows:
        print("nothing to compare: is the root right?")
        return 1
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
