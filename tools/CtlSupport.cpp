#include "CtlSupport.h"

#include <cstdlib>
#include <iomanip>
#include <sstream>

#include "api/CommandTable.h"

namespace pimav::detail {

namespace {

using RequestMethod = int (AvMngApiJson::*)(const Json::Value&, Json::Value&);
using ReplyMethod = int (AvMngApiJson::*)(Json::Value&);
using GainMethod = int (AvMngApiJson::*)(Json::Value&, Json::Value&);

// The pass-through method of each command, by shape; none for the commands without one.
struct PassThrough {
    RequestMethod request = nullptr;
    ReplyMethod replyOnly = nullptr;
    GainMethod gain = nullptr;
};

#define PIMAV_PASS_THROUGH_REQUEST(method) {&AvMngApiJson::method, nullptr, nullptr}
#define PIMAV_PASS_THROUGH_REPLY(method) {nullptr, &AvMngApiJson::method, nullptr}
#define PIMAV_PASS_THROUGH_GAIN(method) {nullptr, nullptr, &AvMngApiJson::method}
#define PIMAV_PASS_THROUGH_NONE(method) {}
const PassThrough kPassThroughs[] = {
#define PIMAV_COMMAND(id, name, method, shape, access, text) PIMAV_PASS_THROUGH_##shape(method),
#include "api/CommandTable.def"
#undef PIMAV_COMMAND
};

std::string lowerCase(std::string s) {
    for (auto& c : s) {
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return s;
}

}  // namespace

std::string describeCode(int code) {
    switch (code) {
        case -1: return "SDP text fails a check or index out of range";
        case -3: return "advertised entry not found";
        case -4: return "a pointer argument is null";
        case -7: return "unsupported or malformed SDP input";
        case -8: return "value refused";
        case -11: return "unknown codec name";
        case -13: return "request could not be built, read or was rejected";
        case -14: return "session id 0";
        case -16: return "no such entry or no free position";
        case -23: return "an empty configuration file selected as start-up";
        case -30: return "the device cannot write its state";
        case -31: return "a limit of the device is reached";
        case -32: return "document too large or too deep";
        default: return ClientJsonApi::describeError(code);
    }
}

Failure::Failure(int code, const std::string& detail)
    : std::runtime_error(code < 0 ? "error " + std::to_string(code) + " (" + describeCode(code) + ")" +
                                        (detail.empty() ? "" : ": " + detail)
                                  : detail),
      m_status(code < 0 ? 1 : code) {}

CtlJsonApi::CtlJsonApi(const std::string& host, uint32_t port, int timeoutMs) {
    ipcHost = host;
    ipcPort = port;
    setClientTimeoutMs(timeoutMs);
}

int CtlJsonApi::init(zmq::context_t& context) { return AvMngApiJson::init(context); }

Json::Value CtlJsonApi::call(unsigned id, Json::Value& request, bool hasRequest) {
    if (id >= Aes67Commands::kCommandCount) {
        throw Failure(2, "command id " + std::to_string(id) + " is not one of 0.." +
                             std::to_string(Aes67Commands::kCommandCount - 1));
    }
    Json::Value reply;
    int rc = 0;
    const PassThrough& p = kPassThroughs[id];
    if (p.request != nullptr) {
        rc = (this->*p.request)(hasRequest ? request : Json::Value(Json::objectValue), reply);
    } else if (p.gain != nullptr) {
        if (!hasRequest) {
            request = Json::Value(Json::objectValue);
        }
        rc = (this->*p.gain)(request, reply);
    } else if (p.replyOnly != nullptr) {
        rc = (this->*p.replyOnly)(reply);
    } else {
        IpcMsg msg = hasRequest ? IpcMsg(id, request) : IpcMsg(id);
        rc = sendMessage(msg, reply);
    }
    if (rc < 0) {
        throw failure(rc);
    }
    if (reply.isObject() && reply.isMember("error") && reply["error"].isObject()) {
        const Json::Value& error = reply["error"];
        std::string detail = error.get("message", "").asString();
        const int code = error.get("code", -13).isInt() ? error.get("code", -13).asInt() : -13;
        throw Failure(code < 0 ? code : -13, detail);
    }
    return reply;
}

Failure CtlJsonApi::failure(int code) {
    ErrorReport report;
    getLastErrorMessage(report);
    if (report.text.empty()) {
        return Failure(code, "to " + getIpcConnectAddress());
    }
    // Failure writes the code's text itself.
    const std::string known = std::string(ClientJsonApi::describeError(code)) + ": ";
    return Failure(code, report.text.rfind(known, 0) == 0 ? report.text.substr(known.size()) : report.text);
}

int commandIdOf(const std::string& text) {
    if (text.empty()) {
        return -1;
    }
    char* end = nullptr;
    const unsigned long value = std::strtoul(text.c_str(), &end, 10);
    if (*end == '\0' && std::isdigit(static_cast<unsigned char>(text[0]))) {
        return value < Aes67Commands::kCommandCount ? static_cast<int>(value) : -1;
    }
    const std::string wanted = lowerCase(text);
    for (const CommandRow& row : kCommandRows) {
        const bool hasMethod = row.shape != CommandShape::NONE;
        if ((hasMethod && wanted == lowerCase(row.method)) || wanted == lowerCase(row.enumName)) {
            return static_cast<int>(row.id);
        }
    }
    return -1;
}

std::vector<std::string> commandWords() {
    std::vector<std::string> words;
    for (const CommandRow& row : kCommandRows) {
        words.push_back(std::to_string(row.id));
        if (row.shape != CommandShape::NONE) {
            words.emplace_back(row.method);
        }
    }
    return words;
}

VerbOutput commandList() {
    VerbOutput output{Json::Value(Json::arrayValue), {}};
    std::ostringstream text;
    for (const CommandRow& row : kCommandRows) {
        std::string description;
        Aes67Commands::getCommandNameStr(row.id, description);
        const bool hasMethod = row.shape != CommandShape::NONE;
        Json::Value& item = output.json.append(Json::Value(Json::objectValue));
        item["id"] = row.id;
        item["method"] = hasMethod ? Json::Value(row.method) : Json::Value();
        item["enum"] = row.enumName;
        item["description"] = description;
        text << std::setw(2) << row.id << "  " << std::left << std::setw(30) << (hasMethod ? row.method : "-")
             << "  " << description << std::right << "\n";
    }
    output.text = text.str();
    return output;
}

std::string renderJson(const Json::Value& value, bool pretty) {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = pretty ? "  " : "";
    builder["emitUTF8"] = true;
    return Json::writeString(builder, value);
}

}  // namespace pimav::detail
