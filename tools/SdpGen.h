#pragma once

// `sdptool gen`: SDP text from a session document, in the form other receivers take.
//
// The session document is the JSON form of SdpSession, plus two optional keys of each
// media object that the tool reads and writes itself: "packing-mode" and "sender-type"
// (the ST 2110-20 PM and TP values). They are written only when set, so documents of
// audio sessions are unchanged.

#include <iosfwd>
#include <string>
#include <vector>

#include <json/json.h>

#include "UserDocument.h"
#include "pimAvMngApi/sdp/SdpSession.h"

namespace pimav::detail {

void readMediaExtras(const Json::Value& doc, SdpSession& session);
void writeMediaExtras(const SdpSession& session, Json::Value& doc);

// Completes a session for receivers: "-" for an empty user name, ST 2110-20's default
// packing mode and sender type for video (each default named in `notices`), group tags
// for two or more media (given by the document, or generated with `nameGroups`),
// grandmaster ids (EUI-64) in upper case. False with `error` set when the session cannot
// be written.
bool prepareForReceivers(SdpSession& session, bool nameGroups, std::vector<std::string>& notices,
                         std::string& error);

// The generated text as receivers read it: format lines without a trailing ';', no
// /TTL on a unicast connection address, CRLF line ends with `crlf` (or when the text
// has them already).
std::string tidyForReceivers(const std::string& sdp, bool crlf);

struct GenOptions {
    std::string file;
    std::string output;  // empty: standard output
    bool dante = false;
    bool crlf = false;
    bool nameGroups = false;
};

struct GenResult {
    int status = 0;  // the exit status: 0 written, 1 generation failed, 2 unusable document
    std::string sdp;
    std::vector<std::string> notices;  // defaults that were filled in
    std::string error;
};

// The text of a session document in the form receivers take.
GenResult generateForReceivers(const Json::Value& doc, const GenOptions& options);

// Reads a session document with the tool's own keys (the form of `sdptool json`) into a
// fresh session and returns what it writes.
RecordRoundTrip sessionRoundTrip();

// Reads the document and writes the text; the status as in GenResult, 2 also for an
// unreadable document or output.
int runGen(const GenOptions& options, std::ostream& out, std::ostream& err);

}  // namespace pimav::detail
