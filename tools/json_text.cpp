#include "tools/json_text.h"

#include <json/writer.h>

#include <memory>
#include <ostream>

namespace qv_tools {

void PrintJson(std::ostream& out, const Json::Value& value) {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "  ";
    builder["emitUTF8"] = true;
    const std::unique_ptr<Json::StreamWriter> writer(builder.newStreamWriter());
    writer->write(value, &out);
    out << "\n";
}

}  // namespace qv_tools
