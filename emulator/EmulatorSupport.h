#pragma once

// Helpers shared by the command handlers of the emulator: request member checks and the
// documents the emulated device builds (stream and session descriptions).

#include <json/json.h>

#include <cstdint>
#include <map>
#include <string>

#include "Emulator.h"
#include "pimAvMngApi/platform/IJsonSerializable.h"
#include "common/RequestServer.h"

namespace pimav::detail {

// The SDI ports of the emulated board.
constexpr uint8_t kSdiPorts = 2;

// The three source lists of a session configuration (SourceApi form).
extern const char* const kSourceLists[3];

// Member checks of a request; each throws CommandError(kBadRequest, ...) naming the member
// when it is missing or of the wrong kind.
uint64_t requireId(const Request& r, const char* key);
unsigned requirePosition(const Request& r);  // "pos" 0..10, else kValueRefused
bool optionalBool(const Request& r, const char* key, bool fallback);
const Json::Value& requireObjectMember(const Request& r, const char* key);
// The request document, or an empty object for a request without one: a handler then
// refuses it by the first member it needs.
const Json::Value& documentOf(const Request& r);

// The text naming member `key` of the document part `where` ("" for the request itself):
// "key" or where."key".
std::string memberPath(const std::string& where, const char* key);
// Refuses (kBadRequest) a text member holding a CR, LF or NUL character: names and SDP
// text fields are written on one line of an SDP text, where such a character would end
// the line and let the rest stand as a line of its own.
void requireOneLine(const Json::Value& text, const std::string& where);
// The same for the session name and the stream names of a configuration (SourceApi form).
void requireOneLineNames(const Json::Value& config, const std::string& where);
// Refuses (kDocumentTooLarge) a document nested deeper than kMaxStoredDepth levels, so
// that what the emulator keeps always reads back.
constexpr unsigned kMaxStoredDepth = 64;
void requireBoundedDepth(const Json::Value& doc, const std::string& where);

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

// ---- stored forms (EmulatorState.cpp) ----

// A running state as the emulator keeps it.
struct RunningState {
    std::map<uint64_t, EmulatedSession> sessions;
    uint64_t nextSessionId = 1;
    uint64_t nextStreamId = 1;
    Json::Value settings;
};
// Reads a running state document (the "running" member of command 10's reply) with every
// member checked and every stored record normalised. Throws CommandError naming the first
// member refused; a document without "sessions" is refused.
RunningState readRunningState(const Json::Value& doc);
// The kept form of one SDI port's settings {"sdi-port", "vpg": {...}}; a port beyond the
// board's is refused with kValueRefused, a member of the wrong kind with kBadRequest.
Json::Value readSdiPattern(const Json::Value& sdi, const std::string& where);
// The kept form of one device setting (a member of the settings), read over its current
// value; throws CommandError naming `where` when it is refused.
Json::Value readSetting(const std::string& key, const Json::Value& given, const Json::Value& current,
                        const std::string& where);

}  // namespace pimav::detail
