#include "JsonText.h"

#include <json/writer.h>

namespace wrb {
namespace {

Json::StreamWriterBuilder Writer(const char* indentation) {
    Json::StreamWriterBuilder writer;
    writer["indentation"] = indentation;
    writer["emitUTF8"] = true;
    writer["precision"] = 6;
    return writer;
}

}  // namespace

std::string JsonLine(const Json::Value& value) {
    static const Json::StreamWriterBuilder writer = Writer("");
    return Json::writeString(writer, value);
}

std::string JsonText(const Json::Value& value) {
    static const Json::StreamWriterBuilder writer = Writer("  ");
    return Json::writeString(writer, value) + "\n";
}

}  // namespace wrb
