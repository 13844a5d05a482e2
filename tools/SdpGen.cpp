#include "SdpGen.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <set>
#include <sstream>

#include "SdpLintText.h"
#include "UserDocument.h"
#include "pimAvMngApi/sdp/SdpConverter.h"

namespace pimav::detail {

namespace {

constexpr const char* kPackingModeKey = "packing-mode";
constexpr const char* kSenderTypeKey = "sender-type";
constexpr const char* kDefaultPackingMode = "2110GPM";
constexpr const char* kDefaultSenderType = "2110TPN";

bool isUnicastIpv4(const std::string& address) {
    in_addr v4{};
    return inet_pton(AF_INET, address.c_str(), &v4) == 1 && (ntohl(v4.s_addr) >> 28) != 0xE;
}

bool nameGroups(SdpSession& session, bool generate, std::string& error) {
    std::set<std::string> used;
    std::vector<size_t> unnamed;
    for (size_t i = 0; i < session.m_media.size(); ++i) {
        const std::string& name = session.m_media[i].m_group;
        if (name.empty()) {
            unnamed.push_back(i);
        } else if (!isSdpToken(name)) {
            error = "media " + std::to_string(i + 1) + ": group name '" + name + "' is not a token";
            return false;
        } else if (!used.insert(name).second) {
            error = "media " + std::to_string(i + 1) + ": group name '" + name + "' is used twice";
            return false;
        }
    }
    if (!unnamed.empty() && !generate) {
        error = std::to_string(unnamed.size()) + " of " + std::to_string(session.m_media.size()) +
                " media have no group name: set \"group\" in each media object, or use --name-groups";
        return false;
    }
    unsigned next = 1;
    for (const size_t i : unnamed) {
        std::string name;
        do {
            name = "S" + std::to_string(next++);
        } while (used.count(name) != 0);
        used.insert(name);
        session.m_media[i].m_group = name;
    }
    return true;
}

}  // namespace

void readMediaExtras(const Json::Value& doc, SdpSession& session) {
    const Json::Value& media = doc["media"];
    for (Json::ArrayIndex i = 0; media.isArray() && i < media.size() && i < session.m_media.size(); ++i) {
        if (media[i].isObject() && media[i][kPackingModeKey].isString()) {
            session.m_media[i].m_packing_mode = media[i][kPackingModeKey].asString();
        }
        if (media[i].isObject() && media[i][kSenderTypeKey].isString()) {
            session.m_media[i].m_sender_type = media[i][kSenderTypeKey].asString();
        }
    }
}

void writeMediaExtras(const SdpSession& session, Json::Value& doc) {
    for (size_t i = 0; i < session.m_media.size(); ++i) {
        const SdpMedia& media = session.m_media[i];
        Json::Value& object = doc["media"][static_cast<Json::ArrayIndex>(i)];
        if (!media.m_packing_mode.empty()) {
            object[kPackingModeKey] = media.m_packing_mode;
        }
        if (!media.m_sender_type.empty()) {
            object[kSenderTypeKey] = media.m_sender_type;
        }
    }
}

bool prepareForReceivers(SdpSession& session, bool generateNames, std::vector<std::string>& notices,
                         std::string& error) {
    if (session.m_media.empty()) {
        error = "the session document has no media";
        return false;
    }
    if (session.m_user_name.empty()) {
        session.m_user_name = "-";
        notices.push_back("no user name, writing o=- (RFC 4566's name for none)");
    }
    for (size_t i = 0; i < session.m_media.size(); ++i) {
        SdpMedia& media = session.m_media[i];
        if (media.m_type == SdpMedia::VIDEO && media.m_packing_mode.empty()) {
            media.m_packing_mode = kDefaultPackingMode;
            notices.push_back("media " + std::to_string(i + 1) +
                              ": no packing mode, writing ST 2110-20's default PM=" + kDefaultPackingMode);
        }
        if (media.m_type == SdpMedia::VIDEO && media.m_sender_type.empty()) {
            media.m_sender_type = kDefaultSenderType;
            notices.push_back("media " + std::to_string(i + 1) +
                              ": no sender type, writing ST 2110-21's default TP=" + kDefaultSenderType);
        }
        if (media.m_ptp_gm_id == "traceable") {
            continue;  // RFC 7273's keyword, not an EUI-64
        }
        std::transform(media.m_ptp_gm_id.begin(), media.m_ptp_gm_id.end(), media.m_ptp_gm_id.begin(),
                       [](char c) { return static_cast<char>(std::toupper(static_cast<unsigned char>(c))); });
    }
    return session.m_media.size() < 2 || nameGroups(session, generateNames, error);
}

std::string tidyForReceivers(const std::string& sdp, bool crlf) {
    const bool hadCrlf = sdp.find("\r\n") != std::string::npos;
    const char* const end = (crlf || hadCrlf) ? "\r\n" : "\n";
    std::string out;
    std::istringstream lines(sdp);
    std::string line;
    while (std::getline(lines, line)) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        if (line.rfind("a=fmtp:", 0) == 0) {
            line.erase(line.find_last_not_of("; ") + 1);
        } else if (line.rfind("c=IN IP4 ", 0) == 0 && line.find('/') != std::string::npos) {
            const size_t slash = line.find('/');
            if (isUnicastIpv4(line.substr(9, slash - 9))) {
                line.erase(slash);
            }
        }
        out += line;
        out += end;
    }
    return out;
}

GenResult generateForReceivers(const Json::Value& doc, const GenOptions& options) {
    GenResult result;
    SdpSession session;
    try {
        Json::Value copy = doc;
        session.Deserialize(copy);
    } catch (const std::exception& e) {
        result.status = 2;
        result.error = std::string("session document cannot be read: ") + e.what();
        return result;
    }
    readMediaExtras(doc, session);
    if (!prepareForReceivers(session, options.nameGroups, result.notices, result.error)) {
        result.status = 2;
        return result;
    }
    SdpConverter converter;
    int rc = converter.setSdpConfig(session);
    if (rc == 0) {
        rc = options.dante ? converter.generateDanteSdp(result.sdp) : converter.getSdpString(&result.sdp);
    }
    if (rc != 0) {
        result.status = 1;
        result.error = "SDP generation failed (" + std::to_string(rc) + ")";
        return result;
    }
    result.sdp = tidyForReceivers(result.sdp, options.crlf);
    return result;
}

RecordRoundTrip sessionRoundTrip() {
    return [](const Json::Value& doc) {
        SdpSession session;
        Json::Value in = doc;
        session.Deserialize(in);
        readMediaExtras(doc, session);
        Json::Value out;
        session.Serialize(out);
        writeMediaExtras(session, out);
        return out;
    };
}

int runGen(const GenOptions& options, std::ostream& out, std::ostream& err) {
    Json::Value doc;
    std::string error;
    std::string warning;
    if (!readJsonObjectFile(options.file, doc, error) ||
        !checkUserDocument(options.file, doc, sessionRoundTrip(), error, warning)) {
        err << error << std::endl;
        return 2;
    }
    if (!warning.empty()) {
        err << warning << std::endl;
    }
    const GenResult result = generateForReceivers(doc, options);
    for (const std::string& notice : result.notices) {
        err << options.file << ": " << notice << std::endl;
    }
    if (result.status != 0) {
        err << options.file << ": " << result.error << std::endl;
        return result.status;
    }
    if (options.output.empty()) {
        out << result.sdp;
        return 0;
    }
    std::ofstream file(options.output, std::ios::binary);
    file << result.sdp;
    file.flush();
    if (!file) {
        err << options.output << ": cannot write: " << std::strerror(errno) << std::endl;
        return 2;
    }
    return 0;
}

}  // namespace pimav::detail
