#include "pimAvMngApi/platform/IJsonSerializable.h"

#include <memory>
#include <sstream>

void IJsonSerializable::convertJsonToString(Json::Value& value, std::string& text) {
    Json::StreamWriterBuilder builder;
    builder["commentStyle"] = "None";
    builder["indentation"] = "";
    std::unique_ptr<Json::StreamWriter> writer(builder.newStreamWriter());
    std::ostringstream stream;
    writer->write(value, &stream);
    text = stream.str();
}
