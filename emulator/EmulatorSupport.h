#pragma once

// Helpers shared by the command handlers of the emulator: request member checks and the
// documents the emulated device builds (stream and session descriptions).

#include <json/json.h>

#include <cstdint>
#include <string>

#include "Emulator.h"
#include "pimAvMngApi/platform/IJsonSerializable.h"
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
// The reply {key: value}.
Json::Value memberReply(const char* key, const Json::Value& value);
std::string compactText(const Json::Value& value);
std::string dotted(uint32_t address);
bool addressUnset(const Json::Value& v);
// `sdp` with the session version of its o= line set to `version` (unchanged without one).
std::string withSdpVersion(const std::string& sdp, uint64_t version);

// Reads `doc` through `record`; a document the record cannot read is refused with
// kBadRequest, "<refusal>: <reason>".
void readThrough(IJsonSerializable& record, Json::Value doc, const std::string& refusal);
// The same, and returns what the record then writes, so that what the emulator keeps is
// exactly what clients read.
Json::Value throughRecord(IJsonSerializable& record, Json::Value doc, const std::string& refusal);
// `current` with every member of `given` put over it.
Json::Value mergedOver(Json::Value current, const Json::Value& given);

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
