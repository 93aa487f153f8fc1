#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>
#include <string>

#include "standalone/password.h"
#include "standalone/user_edit.h"
#include "standalone/user_file.h"
#include "tools/secrets/secret_input.h"
#include "tools/secrets/wiper.h"
#include "tools/usage.h"

namespace {

using qv_standalone::UserFile;

std::string ReadHash() {
    std::string password = qv_secrets::ReadSecretLine("Password");
    const qv_secrets::Wiper wiper(password);
    if (password.empty()) {
        throw std::runtime_error("an empty password is none");
    }
    return qv_standalone::HashPassword(password);
}

void RequireName(const std::string& name) {
    if (!qv_standalone::IsUserName(name)) {
        throw std::runtime_error("a name consists of 1 to 64 letters, digits and . _ - @");
    }
}

int Remove(const std::string& file, const std::string& name) {
    if (qv_standalone::RemoveUser(file, name)) {
        return 0;
    }
    std::cerr << "qv_user: " << file << ": there is no user \"" << name << "\"\n";
    return 1;
}

int RunCommand(int argc, char** argv) {
    CLI::App app(
        "Keeps the file of the users that may log in to the agent. Passwords are read from standard "
        "input, at a terminal without showing them.");
    app.footer("Exit code: 0 done, 1 no such user, 2 failed, or wrong usage.");
    app.require_subcommand(1);
    std::string file;
    std::string name;
    const CLI::App* const hash = app.add_subcommand("hash", "Print the Argon2id hash of a password");
    CLI::App* const add = app.add_subcommand("add", "Add a user, or give one a new password");
    CLI::App* const remove = app.add_subcommand("remove", "Take a user out");
    CLI::App* const list = app.add_subcommand("list", "Print the names");
    CLI::App* const check = app.add_subcommand("check", "Check that the agent can use the file");
    for (CLI::App* const command : {add, remove, list, check}) {
        command->add_option("FILE", file, "The file of users")->required();
    }
    for (CLI::App* const command : {add, remove}) {
        command->add_option("NAME", name, "The user's name")->required();
    }
    if (const auto code = qv_tools::ReadCommandLine(app, "qv_user", argc, argv)) {
        return *code;
    }

    if (hash->parsed()) {
        std::cout << ReadHash() << "\n";
    } else if (add->parsed()) {
        RequireName(name);
        qv_standalone::RequireDirectoryOf(file);  // ahead of the question for a password
        qv_standalone::PutUser(file, name, ReadHash());
    } else if (remove->parsed()) {
        return Remove(file, name);
    } else {
        const UserFile users = UserFile::Load(file);
        if (check->parsed()) {
            std::cout << file << ": " << users.Lines().size() << " user(s), usable\n";
            return 0;
        }
        for (const auto& [user, line] : users.Lines()) {
            std::cout << user << "\n";
        }
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        const int code = RunCommand(argc, argv);
        if (!std::cout.flush()) {
            std::cerr << "qv_user: the output can't be written\n";
            return 2;
        }
        return code;
    } catch (const std::exception& error) {
        std::cerr << "qv_user: " << error.what() << "\n";
        return 2;
    }
}
