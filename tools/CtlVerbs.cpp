// The typed verbs of avmngctl: requests built from the library's records and replies
// read back into them. Each verb gives its JSON document (printed by --json) and writes its
// text form from that document, so both show the same facts.

#include <algorithm>
#include <cstring>
#include <functional>
#include <iomanip>
#include <list>
#include <sstream>

#include "CtlSupport.h"
#include "UserDocument.h"
#include "pimAvMngApi/device/CfgFileTable.h"
#include "pimAvMngApi/device/ClockConfig.h"
#include "pimAvMngApi/device/ClockCounters.h"
#include "pimAvMngApi/device/ClockStatus.h"
#include "pimAvMngApi/model/DestinationApi.h"
#include "pimAvMngApi/model/SessionBasicInfo.h"
#include "pimAvMngApi/model/SessionStatus.h"
#include "pimAvMngApi/model/SourceApi.h"
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

// A column of a text table: its header, its width (0 for the last one) and its cell.
struct Column {
    const char* header;
    int width;
    std::function<std::string(const Json::Value& row)> cell;
};

Column member(const char* header, int width, const char* key) {
    return {header, width, [key](const Json::Value& row) { return row[key].asString(); }};
}

// The width of a column that holds the header and every row's text member `key`, with two
// spaces after it.
int fitted(const char* header, const char* key, const Json::Value& rows) {
    size_t width = std::strlen(header);
    for (const Json::Value& row : rows) {
        width = std::max(width, row[key].asString().size());
    }
    return static_cast<int>(width + 2);
}

std::string table(const std::vector<Column>& columns, const Json::Value& rows) {
    std::ostringstream out;
    out << std::left;
    for (const Column& column : columns) {
        out << std::setw(column.width) << column.header;
    }
    out << "\n";
    for (const Json::Value& row : rows) {
        for (const Column& column : columns) {
            out << std::setw(column.width) << column.cell(row);
        }
        out << "\n";
    }
    return out.str();
}

}  // namespace

VerbOutput sessions(CtlJsonApi& api) {
    Json::Value request = noRequest();
    Json::Value ids = api.call(51, request, false);
    VerbOutput output{Json::Value(Json::arrayValue), {}};
    for (const char* kind : {"senders", "receivers"}) {
        for (const auto& idValue : ids[kind]) {
            Json::Value infoRequest;
            infoRequest["id"] = idValue;
            Json::Value reply = api.call(15, infoRequest, true);
            SessionBasicInfo info;
            readRecord(info, reply, "session information");
            Json::Value& row = output.json.append(Json::Value(Json::objectValue));
            row["id"] = Json::UInt64(info.m_id);
            row["kind"] = std::string(kind) == "senders" ? "sender" : "receiver";
            row["name"] = info.m_name;
            row["streams"] = Json::Value(Json::arrayValue);
            for (const StreamData* stream : info.m_streams) {
                row["streams"].append(Json::UInt64(stream->m_id));
            }
        }
    }
    output.text =
        table({member("ID", 22, "id"),
               member("KIND", 10, "kind"),
               {"STREAMS", 8, [](const Json::Value& row) { return std::to_string(row["streams"].size()); }},
               member("NAME", 0, "name")},
              output.json);
    return output;
}

VerbOutput advertised(CtlJsonApi& api) {
    Json::Value request = noRequest();
    Json::Value reply = api.call(7, request, false);
    const Json::Value& list = reply["list"];
    // Beside the library's list, the emulator says where each entry comes from:
    // {"<id>": {"kind": "file" or "sap", "from": the file's path or the SAP origin}}.
    const Json::Value& sources = reply["sources"];
    VerbOutput output{Json::Value(Json::arrayValue), {}};
    for (const auto& entry : list.isObject() || list.isArray() ? list : Json::Value(Json::arrayValue)) {
        Json::Value& row = output.json.append(Json::Value(Json::objectValue));
        // The text form of the id: an SDP session id may not fit 64 bits.
        row["id"] = entry.get("session-id-str", entry.get("id", 0).asString()).asString();
        row["state"] = entry.get("status", "").asString();
        row["in-use"] = entry.get("inuse", false).asBool();
        row["name"] = entry["session"].isObject() ? entry["session"].get("info", "").asString() : "";
        row["url"] = entry.get("url", "").asString();
        const Json::Value& source = sources.isObject() ? sources[row["id"].asString()] : Json::Value::nullSingleton();
        row["source"] = source.isObject() && source["kind"].isString() && source["from"].isString()
                            ? source
                            : Json::Value();
    }
    output.text =
        table({member("ID", 22, "id"),
               member("STATE", 8, "state"),
               {"IN-USE", 7, [](const Json::Value& row) { return row["in-use"].asBool() ? "yes" : "no"; }},
               member("NAME", fitted("NAME", "name", output.json), "name"),
               member("URL", fitted("URL", "url", output.json), "url"),
               {"SOURCE", 0, [](const Json::Value& row) { return row["source"].get("from", "-").asString(); }}},
              output.json);
    return output;
}

namespace {

// Reads the user's document into the session record (refused with the member at fault),
// sends it with command `id` and reads the reply back into a fresh record, so that both
// directions go through the record's form.
template <typename Record>
VerbOutput addSession(CtlJsonApi& api, const Json::Value& document, const std::string& source,
                      const Warn& warn, unsigned id, const char* what) {
    std::string error;
    std::string warning;
    if (!checkUserDocument(source, document, roundTripOf<Record>(), error, warning)) {
        throw Failure(2, error);
    }
    if (!warning.empty()) {
        warn(warning);
    }
    Record record;
    Json::Value in = document;
    record.Deserialize(in);
    Json::Value request;
    record.Serialize(request);
    Json::Value reply = api.call(id, request, true);
    Record added;
    readRecord(added, reply, what);
    VerbOutput output;
    added.Serialize(output.json);
    return output;
}

}  // namespace

VerbOutput addSource(CtlJsonApi& api, const Json::Value& document, const std::string& source,
                     const Warn& warn) {
    return addSession<SourceApi>(api, document, source, warn, 2, "sender configuration");
}

VerbOutput addDestination(CtlJsonApi& api, const Json::Value& document, const std::string& source,
                          const Warn& warn) {
    return addSession<DestinationApi>(api, document, source, warn, 3, "receiver configuration");
}

VerbOutput clock(CtlJsonApi& api) {
    Json::Value request = noRequest();
    Json::Value reply = api.call(22, request, false);
    ClockConfig config;
    ClockStatus status;
    ClockCounters counters;
    readRecord(config, reply["config"], "clock configuration");
    readRecord(status, reply["status"], "clock status");
    readRecord(counters, reply["counters"], "clock counters");
    VerbOutput output;
    Json::Value& json = output.json;
    json["reference"] = config.getCurrentClockRefTypeStr();
    json["reference-type"] = static_cast<int>(config.getClockRefType());
    json["system"] = status.getCurrentSystemClockStr();
    json["interface"] = status.getCurrentInterfaceClockStr();
    json["current"] = status.getCurrentReferenceClockStr();
    Json::Value& levels = json["counters"];
    levels["current"] = counters.m_current;
    levels["min"] = counters.m_min;
    levels["max"] = counters.m_max;
    levels["underflow"] = counters.m_underflow_event;
    levels["overflow"] = counters.m_overflow_event;
    std::ostringstream text;
    text << "reference:  " << json["reference"].asString() << " (" << json["reference-type"].asInt() << ")\n"
         << "system:     " << json["system"].asString() << "\n"
         << "interface:  " << json["interface"].asString() << "\n"
         << "current:    " << json["current"].asString() << "\n"
         << "counters:   current " << levels["current"].asUInt() << " min " << levels["min"].asUInt()
         << " max " << levels["max"].asUInt() << (levels["underflow"].asBool() ? " underflow" : "")
         << (levels["overflow"].asBool() ? " overflow" : "") << "\n";
    output.text = text.str();
    return output;
}

VerbOutput files(CtlJsonApi& api) {
    Json::Value request = noRequest();
    Json::Value reply = api.call(13, request, false);
    CfgFileTable table;
    readRecord(table, reply, "configuration table");
    VerbOutput output;
    Json::Value& list = output.json["files"] = Json::Value(Json::arrayValue);
    output.json["startup"] = table.getStartupPosition();
    for (unsigned pos = 0; pos < table.m_files.size(); ++pos) {
        const CfgFileInfo& file = table.m_files[pos];
        if (file.m_size == 0) {
            continue;
        }
        Json::Value& row = list.append(Json::Value(Json::objectValue));
        row["pos"] = pos;
        row["size"] = Json::UInt64(file.m_size);
        row["name"] = file.m_name;
        row["startup"] = pos == table.getStartupPosition();
    }
    std::ostringstream text;
    text << std::left << std::setw(5) << "POS" << std::setw(10) << "SIZE"
         << "NAME\n";
    for (const Json::Value& row : list) {
        text << std::setw(5) << row["pos"].asUInt() << std::setw(10) << row["size"].asUInt64()
             << row["name"].asString() << (row["startup"].asBool() ? "  (start-up)" : "") << "\n";
    }
    text << "start-up position: " << table.getStartupPosition() << "\n";
    output.text = text.str();
    return output;
}

VerbOutput alarms(CtlJsonApi& api) {
    Json::Value request = noRequest();
    Json::Value reply = api.call(24, request, false);
    std::list<SessionStatus> sessions;
    std::list<Alarm> global;
    for (auto& element : reply["sessions"]) {
        SessionStatus status;
        readRecord(status, element, "session status");
        sessions.push_back(status);
    }
    for (auto& element : reply["global"]) {
        Alarm alarm;
        readRecord(alarm, element, "alarm");
        global.push_back(alarm);
    }
    VerbOutput output;
    Json::Value& list = output.json["alarms"] = Json::Value(Json::arrayValue);
    output.json["sessions"] = Json::UInt64(sessions.size());
    const auto add = [&list](const Alarm& alarm, const char* scope) -> Json::Value& {
        Json::Value& row = list.append(Json::Value(Json::objectValue));
        row["scope"] = scope;
        row["code"] = alarm.m_code;
        row["text"] = alarm.m_text;
        return row;
    };
    for (const auto& alarm : global) {
        add(alarm, "global");
    }
    for (const auto& session : sessions) {
        for (const auto& alarm : session.m_alarms) {
            add(alarm, "session")["session"] = Json::UInt64(session.m_id);
        }
        for (const auto& stream : session.m_streams) {
            for (const auto& alarm : stream.m_alarms) {
                Json::Value& row = add(alarm, "stream");
                row["session"] = Json::UInt64(session.m_id);
                row["stream"] = Json::UInt64(stream.m_id);
            }
        }
    }
    std::ostringstream text;
    for (const Json::Value& row : list) {
        if (row.isMember("session")) {
            text << "session " << row["session"].asUInt64();
            if (row.isMember("stream")) {
                text << " stream " << row["stream"].asUInt64();
            }
        } else {
            text << "global";
        }
        text << "  code " << row["code"].asUInt() << "  " << row["text"].asString() << "\n";
    }
    text << list.size() << " alarm(s) in " << sessions.size() << " session(s)\n";
    output.text = text.str();
    return output;
}

}  // namespace pimav::detail
