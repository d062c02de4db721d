#include "JsonOutput.h"

#include <json/writer.h>

#include "Console.h"

namespace wrb {

void PrintJson(const Json::Value& value) {
    Json::StreamWriterBuilder writer;
    writer["indentation"] = "  ";
    writer["emitUTF8"] = true;
    PrintOut(Json::writeString(writer, value) + "\n");
}

}  // namespace wrb
