#pragma once

// The typed client API (AvMngApi) driven by case files under tests/data/: each case runs
// its lines in order on one set of values; a call's expectations are the lines up to the
// next call. The line format is described at the head of tests/data/api/typed-calls.txt.

#include <functional>
#include <list>
#include <map>
#include <set>
#include <stdexcept>
#include <string>

#include "pimAvMngApi/api/AvMngApi.h"
#include "support/LogCapture.h"
#include "support/TestData.h"

namespace pimav::detail {

// A record whose Serialize throws, standing in for any request record.
template <typename Record>
struct Throwing : Record {
    void Serialize(Json::Value&) const override { throw std::runtime_error("cannot serialize"); }
};

// Everything the calls read from and write to, kept across the calls of one case.
struct TypedValues {
    SourceApi source;
    DestinationApi destination;
    ChannelList channels;
    uint64_t n = 0;  // the number of the call line: a session id or a position
    std::string sdp, name = "show 1", mode;
    SessionBasicInfo info;
    SessionStreamList list;
    AdvSessionsDb db;
    std::list<unsigned long long> senders, receivers;
    std::list<SessionConfigData> streams;
    CfgFileTable table;
    ClockConfig clock;
    ClockStatus clockStatus;
    ClockCounters clockCounters;
    VtcStatus vtc;
    ErrorReport report;
    AvGlobalCfg global;
    std::list<SessionStatus> sessions;
    std::list<Alarm> alarms;
    UserNotifications notifications;
    TpcStatistics tpc;
    std::list<TpcStatistics> tpcs;
    Json::Value counters;
    ChannelTables tables;
    SdiData sdi;
    bool locked = false;
    SdiOffset offset{1, 20, 30};
    SdiVpgData vpg;
    HdmiAudioOffset hdmi{7};
    InterfaceLoopBack loop;
    VideoRefOutputCfg ref;
    Throwing<SourceApi> badSource;
    Throwing<DestinationApi> badDestination;
    Throwing<ClockConfig> badClock;
    Throwing<AvGlobalCfg> badGlobal;
    Throwing<SdiData> badSdi;
    Throwing<HdmiAudioOffset> badHdmi;
    Throwing<InterfaceLoopBack> badLoop;
    Throwing<VideoRefOutputCfg> badRef;
    Throwing<ChannelList> badChannels;

    // The records a case may fill ("set NAME JSON"); these and the other values can be
    // looked at ("output NAME JSON").
    IJsonSerializable* record(const std::string& n) {
        // clang-format off
        const std::map<std::string, IJsonSerializable*> records = {
            {"source", &source}, {"destination", &destination}, {"channels", &channels}, {"info", &info},
            {"list", &list}, {"db", &db}, {"table", &table}, {"clock", &clock}, {"clockStatus", &clockStatus}, {"clockCounters", &clockCounters}, {"vtc", &vtc}, {"global", &global},
            {"notifications", &notifications}, {"tpc", &tpc}, {"tables", &tables}, {"sdi", &sdi},
            {"vpg", &vpg}, {"hdmi", &hdmi}, {"loop", &loop}, {"ref", &ref}};
        // clang-format on
        const auto it = records.find(n);
        return it == records.end() ? nullptr : it->second;
    }
    template <typename T>
    static Json::Value form(const T& value) {
        Json::Value out;
        if constexpr (std::is_same_v<T, unsigned long long>) {
            out = Json::UInt64(value);
        } else if constexpr (std::is_base_of_v<IJsonSerializable, T> || std::is_same_v<T, SdiOffset>) {
            value.Serialize(out);
        } else {
            out = Json::Value(Json::arrayValue);
            for (const auto& item : value) {
                out.append(form(item));
            }
        }
        return out;
    }
    // The stream records of a session's basic information, each as its own kind writes it.
    static Json::Value streamsOf(const SessionBasicInfo& i) {
        Json::Value out(Json::arrayValue);
        for (const StreamData* stream : i.m_streams) {
            stream->Serialize(out.append(Json::Value()));
        }
        return out;
    }
    Json::Value view(const std::string& n) {
        if (IJsonSerializable* r = record(n)) {
            return form(*r);
        }
        // clang-format off
        const std::map<std::string, Json::Value> others = {
            {"sdp", sdp}, {"mode", mode}, {"locked", locked}, {"counters", counters}, {"offset", form(offset)},
            {"senders", form(senders)}, {"receivers", form(receivers)}, {"streams", form(streams)},
            {"sessions", form(sessions)}, {"alarms", form(alarms)}, {"tpcs", form(tpcs)},
            {"info-streams", streamsOf(info)}, {"report", Json::Value(std::to_string(report.code) + " " +
                                                                        std::to_string(report.commandId))}};
        // clang-format on
        return others.at(n);
    }
};


// What a runner adds to the shared lines (set, call, result, error, logged, output): the
// lines it reads before calls, and the checks of each call only it can make.
struct TypedCaseHooks {
    std::function<bool(const std::string& key, const std::string& value)> setup;  // true: handled
    std::function<void()> beforeCall;
    std::set<std::string> expectationKeys;
    std::function<void(const DataCase& expectations, const std::string& method, int result)> afterCall;
};

// Runs one case against `api`; `log` holds what the call logged.
void runTypedCase(const DataCase& c, AvMngApi& api, LogCapture& log, const TypedCaseHooks& hooks = {});

}  // namespace pimav::detail
