#include "JsonOutput.h"

#include <json/writer.h>

#include "Console.h"

namespace wrb {
namespace {

std::string Write(const Json::Value& value, const char* indentation) {
    Json::StreamWriterBuilder writer;
    writer["indentation"] = indentation;
    writer["emitUTF8"] = true;
    writer["precision"] = 6;
    return Json::writeString(writer, value) + "\n";
}

}  // namespace

std::string JsonLine(const Json::Value& value) {
    return Write(value, "");
}

std::string JsonText(const Json::Value& value) {
    return Write(value, "  ");
}

void PrintJson(const Json::Value& value) {
    PrintOut(JsonText(value));
}

}  // namespace wrb
