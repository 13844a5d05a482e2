// The session-level rules and the grouping lines.

#include <cstdint>
#include <string_view>

#include "sdp/SdpLog.h"
#include "sdp/SdpNumbers.h"
#include "sdp/SdpRules.h"

namespace pimav::detail {

namespace {

// a=group:<semantics> <identification-tag> ...
struct GroupSemantics {
    std::string_view token;  // a grouping line begins with it; the items follow
    SdpGroup::Type type;
    enum Kind { Dup, Multi, Unsupported } kind;
};

// Every line is tested against each row in turn. A MULTI group, once seen, keeps a later
// DUP line from replacing it.
constexpr GroupSemantics kGroupSemantics[] = {
    {"a=group:DUP ", SdpGroup::GROUP_DUP, GroupSemantics::Dup},
    {"a=group:MULTI-2SI ", SdpGroup::GROUP_MULTI_2SI, GroupSemantics::Multi},
    {"a=group:MULTI-SD ", SdpGroup::GROUP_MULTI_SD, GroupSemantics::Multi},
    {"a=group:PHASED ", SdpGroup::GROUP_NONE, GroupSemantics::Unsupported},
};

// o=<username> <sess-id> <sess-version> IN IP4 <unicast-address>
void readOrigin(SdpSession& session, std::string_view value) {
    FieldReader fields(value);
    session.m_user_name.assign(fields.next(' '));
    SDP_LOG(7, "::User name found::%s", session.m_user_name.c_str());
    if (!fields.separated()) {
        return;
    }
    session.m_session_id = extractUnsigned64(fields.next(' '));
    SDP_LOG(7, "::Session id found::%llu", static_cast<unsigned long long>(session.m_session_id));
    if (!fields.separated()) {
        return;
    }
    const std::string_view afterId = fields.rest();
    const std::string_view version = fields.next(' ');
    if (fields.separated()) {
        session.m_session_version = lenientUnsigned<unsigned long long>(version);
        SDP_LOG(7, "::Session version found::%llu",
                static_cast<unsigned long long>(session.m_session_version));
    }
    std::string_view address;
    if (textAfter(afterId, "IN IP4 ", address)) {
        if (parseIp(address, session.m_local_ip)) {
            SDP_LOG(7, "::Source IP found [%.*s]", SDP_VIEW(address));
        } else {
            SDP_LOG(2, "Error parsing IP [%.*s]: invalid IP address", SDP_VIEW(address));
            SDP_LOG(5, "::Source IP found but it is invalid: [%.*s]", SDP_VIEW(address));
        }
    }
}

}  // namespace

void splitGroupItems(std::string_view items, SdpGroup& group) {
    SDP_LOG(6, "SDP:: found group in SDP %.*s", SDP_VIEW(items));
    FieldReader fields(items);
    for (;;) {
        group.m_items.emplace_back(trim(fields.next(' ')));
        if (!fields.separated()) {
            break;
        }
        SDP_LOG(7, "SDP:: parsed group item %s", group.m_items.back().c_str());
    }
    SDP_LOG(7, "SDP:: parsed last group item %s", group.m_items.back().c_str());
}

int readGroups(const std::vector<SdpLine>& lines, SdpGroup& group) {
    bool multiSeen = false;
    for (const SdpLine& scanned : lines) {
        if (!scanned.has(kGroupToken)) {
            continue;  // none of the semantics can match
        }
        const std::string_view line = scanned.text();
        for (const GroupSemantics& semantics : kGroupSemantics) {
            if (line.find(semantics.token) == std::string_view::npos ||
                (semantics.kind == GroupSemantics::Dup && multiSeen)) {
                continue;
            }
            if (semantics.kind == GroupSemantics::Unsupported) {
                SDP_LOG(2, "Group %s not supported", "PHASED");
                return -7;
            }
            group.m_type = semantics.type;
            splitGroupItems(line.substr(semantics.token.size()), group);
            multiSeen = multiSeen || semantics.kind == GroupSemantics::Multi;
        }
    }
    return 0;
}

void readSessionLines(SdpSession& session, const LineList& lines, std::vector<std::string_view>& ignored) {
    for (const SdpLine* next : lines) {
        const SdpLine& line = *next;
        if (line.has(kVersionToken)) {
            // v=<version>
            session.m_protocol_version =
                static_cast<uint8_t>(lenientUnsigned<unsigned int>(line.valueAt(kVersionToken)));
            SDP_LOG(7, "::Version found::%d", session.m_protocol_version);
        } else if (line.has(kOriginToken)) {
            readOrigin(session, line.valueAt(kOriginToken));
        } else if (line.has(kNameToken)) {
            // s=<session name>
            session.m_info.assign(line.valueAt(kNameToken));
            SDP_LOG(7, "::Description found::%s", session.m_info.c_str());
        } else if (line.has(kTimeToken)) {
            // t=<start-time> <stop-time>
            FieldReader fields(line.valueAt(kTimeToken));
            session.m_time.m_start = lenientUnsigned<unsigned int>(fields.next(' '));
            session.m_time.m_stop = fields.separated() ? lenientUnsigned<unsigned int>(fields.rest()) : 0;
            SDP_LOG(7, "::start time %d Stop time %d", session.m_time.m_start, session.m_time.m_stop);
        } else {
            ignored.push_back(line.text());
        }
    }
}

}  // namespace pimav::detail
