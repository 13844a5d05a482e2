#pragma once

// Helpers shared by the command handlers of the emulator: request member checks and the
// documents the emulated device builds (stream and session descriptions).

#include <json/json.h>

#include <cstdint>
#include <string>

#include "Emulator.h"
#include "common/RequestServer.h"

namespace pimav::detail {

// Member checks of a request; each throws CommandError(kBadRequest, ...) when the member
// is missing or of the wrong kind.
uint64_t requireId(const Request& r, const char* key);
unsigned requirePosition(const Request& r);  // "pos" 0..10, else kValueRefused
bool optionalBool(const Request& r, const char* key, bool fallback);
const Json::Value& requireObjectMember(const Request& r, const char* key);
const Json::Value& requireDocument(const Request& r);

// Throws CommandError(code) with the user messages that a validation left in the
// collector (which is emptied), appended to `what`.
[[noreturn]] void refuseWithUserMessages(int code, const std::string& what);
Json::Value emptyReply();
std::string compactText(const Json::Value& value);
std::string dotted(uint32_t address);
bool addressUnset(const Json::Value& v);

// Reads a sender configuration document (the SourceApi form) through the library's
// record and writes it back, so that the stored form is exactly what clients read.
// Throws CommandError(kBadRequest) when the record cannot read it.
Json::Value normaliseSourceApi(const Json::Value& doc);
// The same for a receiver configuration (the DestinationApi form); the members that the
// record reads but does not write ("source-ip", "network-index") are kept.
Json::Value normaliseDestinationApi(const Json::Value& doc);

// The stream document (StreamData JSON form) of one source of a sender session.
Json::Value senderStreamDocument(const Json::Value& source, const std::string& media, unsigned index, bool paused);
// The SessionConfigData document of a session.
Json::Value sessionConfigDocument(const EmulatedSession& session, const Json::Value& settings);
// The default device settings (clock, global, interfaces, gains, alarms).
Json::Value defaultSettings();

}  // namespace pimav::detail
