#include "pimAvMngApi/api/Aes67Commands.h"

#include "api/CommandTable.h"

int Aes67Commands::getCommandNameStr(aes67_command_id_t id, std::string& description) {
    // Built once, on first use; the runtime guards the initialisation against
    // concurrent first calls. Entry `id` is the text of command `id` (api/CommandTable.h
    // checks the order of the rows).
    static const std::string descriptions[kCommandCount] = {
#define PIMAV_COMMAND(id, name, method, shape, access, text) text,
#include "api/CommandTable.def"
#undef PIMAV_COMMAND
    };
    if (id >= kCommandCount) {
        description += "not recognized";
        return 0;
    }
    description = descriptions[id];
    return 0;
}
