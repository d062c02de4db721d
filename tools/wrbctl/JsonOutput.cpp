#include "JsonOutput.h"

#include <json/writer.h>

#include "Console.h"

namespace wrb {

std::string JsonLine(const Json::Value& value) {
    Json::StreamWriterBuilder writer;
    writer["indentation"] = "";
    writer["emitUTF8"] = true;
    writer["precision"] = 6;
    return Json::writeString(writer, value) + "\n";
}

void PrintJson(const Json::Value& value) {
    Json::StreamWriterBuilder writer;
    writer["indentation"] = "  ";
    writer["emitUTF8"] = true;
    PrintOut(Json::writeString(writer, value) + "\n");
}

}  // namespace wrb
