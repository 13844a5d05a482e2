#pragma once

// Files and JSON documents that a user hands to a tool, read with messages that name the
// file, the member and the cause on one line. What a record reads and writes is learnt from
// the record itself (its Deserialize and Serialize), so no list of keys is written twice.

#include <json/json.h>

#include <functional>
#include <string>
#include <vector>

namespace pimav::detail {

// The bytes of the file at `path`. False with `error` naming the file and the cause
// ("PATH: is a directory, not a file", "PATH: cannot read: No such file or directory").
bool readUserFile(const std::string& path, std::string& text, std::string& error);

// Strict JSON (no comments, no trailing text, no duplicate keys). False with `error` holding
// every message of the reader on one line ("line 1, column 5: Missing '}' or object member name").
bool parseJsonText(const std::string& text, Json::Value& doc, std::string& error);

// A file holding one JSON object. False with `error` naming the file ("PATH: not valid JSON:
// ...", "PATH: holds an array, not a JSON object").
bool readJsonObjectFile(const std::string& path, Json::Value& doc, std::string& error);

// Reads `doc` into a fresh record and returns what that record writes; throws what the
// record throws on a member it cannot read.
using RecordRoundTrip = std::function<Json::Value(const Json::Value& doc)>;

template <typename Record>
RecordRoundTrip roundTripOf() {
    return [](const Json::Value& doc) {
        Record record;
        Json::Value in = doc;
        record.Deserialize(in);
        Json::Value out;
        record.Serialize(out);
        return out;
    };
}

// Why the record cannot read `doc`, naming the member at fault
// ("member \"audio-sources[0].ptime\": a number expected, found a string"); empty when it can.
std::string unreadableMember(const Json::Value& doc, const RecordRoundTrip& roundTrip);

// The members of `doc` that the record neither writes back nor reads, as paths
// ("audio-source", "audio-sources[0].chanel-freq"). A member counts as read when putting
// a value there that no reader accepts makes reading fail.
std::vector<std::string> unknownMembers(const Json::Value& doc, const RecordRoundTrip& roundTrip);

// Checks a user's document before the record reads it. False with `error`
// ("SOURCE: member ..."); `warning` is set ("SOURCE: warning: ...") when members are
// ignored.
bool checkUserDocument(const std::string& source, const Json::Value& doc, const RecordRoundTrip& roundTrip,
                       std::string& error, std::string& warning);

}  // namespace pimav::detail
