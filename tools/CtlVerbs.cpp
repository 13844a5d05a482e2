// The typed verbs of avmngctl: requests built from the library's records and replies
// read back into them before printing.

#include <algorithm>
#include <iomanip>
#include <list>

#include "CtlSupport.h"
#include "pimAvMngApi/adv/AdvSessionsDb.h"
#include "pimAvMngApi/device/CfgFileTable.h"
#include "pimAvMngApi/device/ClockConfig.h"
#include "pimAvMngApi/device/ClockCounters.h"
#include "pimAvMngApi/device/ClockStatus.h"
#include "pimAvMngApi/model/DestinationApi.h"
#include "pimAvMngApi/model/SessionBasicInfo.h"
#include "pimAvMngApi/model/SourceApi.h"
#include "pimAvMngApi/model/SessionStatus.h"
#include "pimAvMngApi/platform/Alarm.h"

namespace pimav::detail {

namespace {

Json::Value noRequest() { return Json::Value(); }

void readRecord(IJsonSerializable& record, Json::Value& doc, const char* what) {
    try {
        record.Deserialize(doc);
    } catch (const std::exception& e) {
        throw Failure(-13, std::string("the reply's ") + what + " cannot be read: " + e.what());
    }
}

}  // namespace

void printSessions(CtlJsonApi& api, std::ostream& out) {
    Json::Value request = noRequest();
    Json::Value ids = api.call(51, request, false);
    out << std::left << std::setw(22) << "ID" << std::setw(10) << "KIND" << std::setw(8) << "STREAMS" << "NAME"
        << std::right << "\n";
    for (const char* kind : {"senders", "receivers"}) {
        for (const auto& idValue : ids[kind]) {
            Json::Value infoRequest;
            infoRequest["id"] = idValue;
            Json::Value reply = api.call(15, infoRequest, true);
            SessionBasicInfo info;
            readRecord(info, reply, "session information");
            out << std::left << std::setw(22) << info.m_id << std::setw(10)
                << (std::string(kind) == "senders" ? "sender" : "receiver") << std::setw(8) << info.m_streams.size()
                << info.m_name << std::right << "\n";
        }
    }
}

void printAdvertised(CtlJsonApi& api, std::ostream& out) {
    Json::Value request = noRequest();
    Json::Value reply = api.call(7, request, false);
    AdvSessionsDb db;
    readRecord(db, reply["list"], "advertised sessions");
    // Beside the library's list, the emulator says where each entry comes from: a file's
    // path or the SAP origin.
    const Json::Value& sources = reply["sources"];
    struct Row {
        std::string id, state, inUse, name, url, source;
    };
    std::vector<Row> rows = {{"ID", "STATE", "IN-USE", "NAME", "URL", "SOURCE"}};
    for (const auto& [id, entry] : db.m_entries) {
        const std::string idText = std::to_string(id);
        const Json::Value& source = sources.isObject() ? sources[idText] : Json::Value::nullSingleton();
        rows.push_back({idText, entry.getStatus().toString(), entry.isInUse() ? "yes" : "no",
                        entry.m_session.m_info, entry.getSourceUrl(),
                        source.isObject() ? source.get("from", "-").asString() : "-"});
    }
    size_t nameWidth = 0;
    size_t urlWidth = 0;
    for (const Row& row : rows) {
        nameWidth = std::max(nameWidth, row.name.size());
        urlWidth = std::max(urlWidth, row.url.size());
    }
    for (const Row& row : rows) {
        out << std::left << std::setw(22) << row.id << std::setw(8) << row.state << std::setw(7) << row.inUse
            << std::setw(static_cast<int>(nameWidth + 2)) << row.name << std::setw(static_cast<int>(urlWidth + 2))
            << row.url << row.source << std::right << "\n";
    }
}

namespace {

// Reads `document` into the session record, sends it with command `id` and reads the
// reply back into a fresh record, so that both directions go through the record's form.
template <typename Record>
Json::Value addSession(CtlJsonApi& api, const Json::Value& document, unsigned id, const char* what) {
    Record record;
    Json::Value in = document;
    readRecord(record, in, what);
    Json::Value request;
    record.Serialize(request);
    Json::Value reply = api.call(id, request, true);
    Record added;
    readRecord(added, reply, what);
    Json::Value out;
    added.Serialize(out);
    return out;
}

}  // namespace

Json::Value addSource(CtlJsonApi& api, const Json::Value& document) {
    return addSession<SourceApi>(api, document, 2, "sender configuration");
}

Json::Value addDestination(CtlJsonApi& api, const Json::Value& document) {
    return addSession<DestinationApi>(api, document, 3, "receiver configuration");
}

void printClock(CtlJsonApi& api, std::ostream& out) {
    Json::Value request = noRequest();
    Json::Value reply = api.call(22, request, false);
    ClockConfig config;
    ClockStatus status;
    ClockCounters counters;
    readRecord(config, reply["config"], "clock configuration");
    readRecord(status, reply["status"], "clock status");
    readRecord(counters, reply["counters"], "clock counters");
    out << "reference:  " << config.getCurrentClockRefTypeStr() << " (" << config.getClockRefType() << ")\n";
    out << "system:     " << status.getCurrentSystemClockStr() << "\n";
    out << "interface:  " << status.getCurrentInterfaceClockStr() << "\n";
    out << "current:    " << status.getCurrentReferenceClockStr() << "\n";
    out << "counters:   current " << counters.m_current << " min " << counters.m_min << " max " << counters.m_max
        << (counters.m_underflow_event ? " underflow" : "") << (counters.m_overflow_event ? " overflow" : "") << "\n";
}

void printFiles(CtlJsonApi& api, std::ostream& out) {
    Json::Value request = noRequest();
    Json::Value reply = api.call(13, request, false);
    CfgFileTable table;
    readRecord(table, reply, "configuration table");
    out << std::left << std::setw(5) << "POS" << std::setw(10) << "SIZE" << "NAME" << std::right << "\n";
    for (unsigned pos = 0; pos < table.m_files.size(); ++pos) {
        const CfgFileInfo& file = table.m_files[pos];
        if (file.m_size == 0) {
            continue;
        }
        out << std::left << std::setw(5) << pos << std::setw(10) << file.m_size << file.m_name
            << (pos == table.getStartupPosition() ? "  (start-up)" : "") << std::right << "\n";
    }
    out << "start-up position: " << table.getStartupPosition() << "\n";
}

void printAlarms(CtlJsonApi& api, std::ostream& out) {
    Json::Value request = noRequest();
    Json::Value reply = api.call(24, request, false);
    std::list<SessionStatus> sessions;
    std::list<Alarm> alarms;
    for (auto& element : reply["sessions"]) {
        SessionStatus status;
        readRecord(status, element, "session status");
        sessions.push_back(status);
    }
    for (auto& element : reply["global"]) {
        Alarm alarm;
        readRecord(alarm, element, "alarm");
        alarms.push_back(alarm);
    }
    unsigned count = 0;
    for (const auto& alarm : alarms) {
        out << "global  code " << alarm.m_code << "  " << alarm.m_text << "\n";
        ++count;
    }
    for (const auto& session : sessions) {
        for (const auto& alarm : session.m_alarms) {
            out << "session " << session.m_id << "  code " << alarm.m_code << "  " << alarm.m_text << "\n";
            ++count;
        }
        for (const auto& stream : session.m_streams) {
            for (const auto& alarm : stream.m_alarms) {
                out << "session " << session.m_id << " stream " << stream.m_id << "  code " << alarm.m_code << "  "
                    << alarm.m_text << "\n";
                ++count;
            }
        }
    }
    out << count << " alarm(s) in " << sessions.size() << " session(s)\n";
}

}  // namespace pimav::detail
