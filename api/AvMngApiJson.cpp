#include "pimAvMngApi/api/AvMngApiJson.h"

#include "pimAvMngApi/platform/IpcMsg.h"
#include "api/AvMngApiTrace.h"

AvMngApiJson::AvMngApiJson() : ClientJsonApi(), ipcPort(kDefaultIpcPort), ipcHost("127.0.0.1") {}

AvMngApiJson::~AvMngApiJson() = default;

std::string AvMngApiJson::getIpcConnectAddress() {
    return "tcp://" + ipcHost + ":" + std::to_string(ipcPort);
}

int AvMngApiJson::getCommandDescription(unsigned int id, std::string& description) {
    return Aes67Commands::getCommandNameStr(static_cast<aes67_command_id_t>(id), description);
}

int AvMngApiJson::getClientTimeout() {
    return 150000;
}

int AvMngApiJson::init(zmq::context_t& context) {
    PIMAV_CHK(ClientJsonApi::init(context));
    return 0;
}

int AvMngApiJson::init(zmq::context_t& context, std::string& host) {
    ipcHost = host;
    PIMAV_CHK(init(context));
    return 0;
}

// The pass-through methods, one per row of the command table. Each body is expanded on
// its row's line, so a method's CHK line carries its own signature and a line of its own.
#define PIMAV_PASS_THROUGH(method, parameters, ...) \
    int AvMngApiJson::method parameters {           \
        IpcMsg msg(__VA_ARGS__);                    \
        PIMAV_CHK(sendMessage(msg, reply));         \
        return 0;                                   \
    }
#define PIMAV_PASS_THROUGH_REQUEST(command, method) \
    PIMAV_PASS_THROUGH(method, (const Json::Value& request, Json::Value& reply), command, request)
#define PIMAV_PASS_THROUGH_GAIN(command, method) \
    PIMAV_PASS_THROUGH(method, (Json::Value& request, Json::Value& reply), command, request)
#define PIMAV_PASS_THROUGH_REPLY(command, method) PIMAV_PASS_THROUGH(method, (Json::Value& reply), command)
#define PIMAV_PASS_THROUGH_NONE(command, method)

#define PIMAV_COMMAND(id, name, method, shape, access, text) PIMAV_PASS_THROUGH_##shape(name, method)
#include "api/CommandTable.def"
#undef PIMAV_COMMAND
