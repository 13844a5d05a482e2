#include "support/TypedCalls.h"

#include <gtest/gtest.h>

#include "support/JsonText.h"
#include <memory>

#include "support/KindedJson.h"

namespace pimav::detail {

namespace {

using Call = std::function<int(AvMngApi&, TypedValues&)>;

// A call: `method` of the AvMngApi `a`, on the values `v`.
// clang-format off
#define PIMAV_CALL(label, method) {label, [](AvMngApi& a, [[maybe_unused]] TypedValues& v) { return a.method; }}
// clang-format on

// The calls by label: the method's name, with the variant in brackets.
const std::map<std::string, Call>& calls() {
    static const std::map<std::string, Call> all = {
        PIMAV_CALL("addSourceSession", addSourceSession(&v.source)),
        PIMAV_CALL("addDestinationSession", addDestinationSession(&v.destination)),
        PIMAV_CALL("addDestinationSession(source)", addDestinationSession(&v.source)),
        PIMAV_CALL("updateSession", updateSession(&v.source)),
        PIMAV_CALL("removeSession", removeSession(v.n)),
        PIMAV_CALL("disconnectChannels", disconnectChannels(v.n, v.channels)),
        PIMAV_CALL("getSessionSdp", getSessionSdp(v.n, &v.sdp)),
        PIMAV_CALL("getSessionBasicInfo", getSessionBasicInfo(v.n, &v.info)),
        PIMAV_CALL("getSessionCfg", getSessionCfg(v.n, &v.source)),
        PIMAV_CALL("getSourceSessionList", getSourceSessionList(&v.list)),
        PIMAV_CALL("getDestinationSessionList", getDestinationSessionList(&v.list)),
        PIMAV_CALL("getAdvertisedSessionList", getAdvertisedSessionList(&v.db)),
        PIMAV_CALL("pauseResumeSession", pauseResumeSession(v.n, true)),
        PIMAV_CALL("pauseResumeSession(resume)", pauseResumeSession(v.n, false)),
        PIMAV_CALL("getResourceAllocatedIds", getResourceAllocatedIds(v.senders, v.receivers)),
        PIMAV_CALL("getListOfExistingStreams", getListOfExistingStreams(v.streams)),
        {"getResourceAllocatedIds(fresh)", [](AvMngApi& a, TypedValues& v) {
             v.senders.clear();
             v.receivers.clear();
             return a.getResourceAllocatedIds(v.senders, v.receivers);
         }},
        PIMAV_CALL("getLastErrorMessage", getLastErrorMessage(v.report)),
        {"setSdiInterface(1080i50)", [](AvMngApi& a, TypedValues& v) {
             v.sdi.m_video_format = VideoFormat(VideoFormat::VIDEO_FORMAT_1080I50);  // no document sets it
             return a.setSdiInterface(&v.sdi);
         }},
        PIMAV_CALL("fileCfgSaveRunning", fileCfgSaveRunning(v.n, &v.name, true)),
        PIMAV_CALL("fileCfgSaveRunning(not startup)", fileCfgSaveRunning(v.n, &v.name, false)),
        PIMAV_CALL("fileCfgLoadCfgToRunning", fileCfgLoadCfgToRunning(v.n)),
        PIMAV_CALL("fileCfgLoadDefaultToRunning", fileCfgLoadDefaultToRunning()),
        PIMAV_CALL("fileCfgGetTable", fileCfgGetTable(&v.table)),
        PIMAV_CALL("fileCfgSetStartupPos", fileCfgSetStartupPos(v.n)),
        PIMAV_CALL("fileCfgRemoveConfig", fileCfgRemoveConfig(v.n)),
        PIMAV_CALL("cfgSystemClock", cfgSystemClock(&v.clock)),
        PIMAV_CALL("getSystemClockInfo", getSystemClockInfo(nullptr, nullptr, nullptr, nullptr)),
        PIMAV_CALL("getSystemClockInfo(all)", getSystemClockInfo(&v.clock, &v.clockStatus, &v.clockCounters, &v.vtc)),
        PIMAV_CALL("resetSystemClockCounters", resetSystemClockCounters()),
        PIMAV_CALL("getGlobalConfig", getGlobalConfig(&v.global)),
        PIMAV_CALL("setGlobalConfig", setGlobalConfig(v.global)),
        PIMAV_CALL("getAlarmStatus", getAlarmStatus(v.sessions, v.alarms)),
        PIMAV_CALL("getUserNotifications", getUserNotifications(v.notifications)),
        PIMAV_CALL("getSessionTPCStats", getSessionTPCStats(v.n, v.tpc)),
        PIMAV_CALL("getSessionAllTPCStats", getSessionAllTPCStats(v.tpcs)),
        PIMAV_CALL("getSessionCounters", getSessionCounters(v.n, v.counters)),
        PIMAV_CALL("getSessionInternalStatus", getSessionInternalStatus(v.n, true, false, true, v.counters)),
        PIMAV_CALL("getChannelTables", getChannelTables(v.tables, true)),
        PIMAV_CALL("getChannelTables(short)", getChannelTables(v.tables, false)),
        PIMAV_CALL("setSdiInterface", setSdiInterface(&v.sdi)),
        PIMAV_CALL("getSdiInterfaceInfo(0)", getSdiInterfaceInfo(0, v.locked, v.mode)),
        PIMAV_CALL("getSdiInterfaceInfo(1)", getSdiInterfaceInfo(1, v.locked, v.mode)),
        PIMAV_CALL("setSdiOffset(5)", setSdiOffset(5, v.offset)),
        PIMAV_CALL("setSdiOffset(0)", setSdiOffset(0, v.offset)),
        PIMAV_CALL("getSdiOffset(1)", getSdiOffset(1, v.offset)),
        PIMAV_CALL("getSdiOffset(2)", getSdiOffset(2, v.offset)),
        PIMAV_CALL("getSdiVpgInfo(0)", getSdiVpgInfo(0, v.vpg)),
        PIMAV_CALL("getSdiVpgInfo(1)", getSdiVpgInfo(1, v.vpg)),
        PIMAV_CALL("setHdmiAudioOffset", setHdmiAudioOffset(v.hdmi)),
        PIMAV_CALL("getHdmiAudioOffset", getHdmiAudioOffset(v.hdmi)),
        PIMAV_CALL("setInterfaceLoopBackMode", setInterfaceLoopBackMode(v.loop)),
        PIMAV_CALL("getVideoReferenceCfg", getVideoReferenceCfg(v.ref)),
        PIMAV_CALL("setVideoReferenceCfg", setVideoReferenceCfg(v.ref)),
        PIMAV_CALL("fileCfgGetRunning", jsonApi.fileCfgGetRunning(v.counters)),
        // Null pointers.
        PIMAV_CALL("addSourceSession(null)", addSourceSession(nullptr)),
        PIMAV_CALL("addDestinationSession(null)",
                   addDestinationSession(static_cast<DestinationApi*>(nullptr))),
        PIMAV_CALL("addDestinationSession(null source)",
                   addDestinationSession(static_cast<SourceApi*>(nullptr))),
        PIMAV_CALL("updateSession(null)", updateSession(nullptr)),
        PIMAV_CALL("getSessionSdp(null)", getSessionSdp(1, nullptr)),
        PIMAV_CALL("getSessionBasicInfo(null)", getSessionBasicInfo(1, nullptr)),
        PIMAV_CALL("getSessionCfg(null)", getSessionCfg(1, nullptr)),
        PIMAV_CALL("getSourceSessionList(null)", getSourceSessionList(nullptr)),
        PIMAV_CALL("getDestinationSessionList(null)", getDestinationSessionList(nullptr)),
        PIMAV_CALL("getAdvertisedSessionList(null)", getAdvertisedSessionList(nullptr)),
        PIMAV_CALL("fileCfgSaveRunning(null)", fileCfgSaveRunning(1, nullptr, false)),
        PIMAV_CALL("fileCfgGetTable(null)", fileCfgGetTable(nullptr)),
        PIMAV_CALL("cfgSystemClock(null)", cfgSystemClock(nullptr)),
        PIMAV_CALL("getGlobalConfig(null)", getGlobalConfig(nullptr)),
        PIMAV_CALL("setSdiInterface(null)", setSdiInterface(nullptr)),
        // Request records that cannot be written.
        PIMAV_CALL("addSourceSession(throwing)", addSourceSession(&v.badSource)),
        PIMAV_CALL("addDestinationSession(throwing)", addDestinationSession(&v.badDestination)),
        PIMAV_CALL("addDestinationSession(throwing source)", addDestinationSession(&v.badSource)),
        PIMAV_CALL("updateSession(throwing)", updateSession(&v.badSource)),
        PIMAV_CALL("disconnectChannels(throwing)", disconnectChannels(1, v.badChannels)),
        PIMAV_CALL("cfgSystemClock(throwing)", cfgSystemClock(&v.badClock)),
        PIMAV_CALL("setGlobalConfig(throwing)", setGlobalConfig(v.badGlobal)),
        PIMAV_CALL("setSdiInterface(throwing)", setSdiInterface(&v.badSdi)),
        PIMAV_CALL("setHdmiAudioOffset(throwing)", setHdmiAudioOffset(v.badHdmi)),
        PIMAV_CALL("setInterfaceLoopBackMode(throwing)", setInterfaceLoopBackMode(v.badLoop)),
        PIMAV_CALL("setVideoReferenceCfg(throwing)", setVideoReferenceCfg(v.badRef)),
    };
    return all;
}
#undef PIMAV_CALL


}  // namespace

void runTypedCase(const DataCase& c, AvMngApi& api, LogCapture& log, const TypedCaseHooks& hooks) {
    static const std::set<std::string> shared = {"result", "error", "logged", "output"};
    const auto isExpectation = [&](const std::string& key) {
        return shared.count(key) != 0 || hooks.expectationKeys.count(key) != 0;
    };
    auto values = std::make_unique<TypedValues>();
    for (size_t i = 0; i < c.lines.size(); ++i) {
        const auto& [key, value] = c.lines[i];
        if (isExpectation(key)) {
            continue;  // read with the call before it
        } else if (key == "fresh") {
            values = std::make_unique<TypedValues>();  // every value as new
        } else if (key == "set") {
            const size_t space = value.find(' ');
            Json::Value doc = jsonOf(value.substr(space + 1));
            IJsonSerializable* record = values->record(value.substr(0, space));
            ASSERT_NE(record, nullptr) << c.places[i] << ": no record " << value;
            record->Deserialize(doc);
        } else if (key == "call") {
            // "call LABEL [N]": N is the session id or position the call passes.
            const size_t space = value.rfind(' ');
            const bool numbered = space != std::string::npos &&
                                  value.find_first_not_of("0123456789", space + 1) == std::string::npos;
            const std::string label = numbered ? value.substr(0, space) : value;
            if (numbered) {
                values->n = std::stoull(value.substr(space + 1));
            }
            DataCase e{c.places[i], value, {}, {}};
            for (size_t j = i + 1; j < c.lines.size() && c.lines[j].first != "call"; ++j) {
                if (isExpectation(c.lines[j].first)) {
                    e.lines.push_back(c.lines[j]);
                }
            }
            SCOPED_TRACE(e.where + " call " + value);
            log.clear();
            if (hooks.beforeCall) {
                hooks.beforeCall();
            }
            const auto call = calls().find(label);
            ASSERT_NE(call, calls().end()) << "no call " << label;
            const int result = call->second(api, *values);
            EXPECT_EQ(result, std::stoi(e.get("result", "0")));
            EXPECT_TRUE(log.matches(2, e.all("error"))) << ::testing::PrintToString(log.at(2));
            for (const std::string& line : e.all("logged")) {
                EXPECT_EQ(log.count(line), 1u) << line;
            }
            for (const std::string& output : e.all("output")) {
                const size_t at = output.find(' ');
                const Json::Value actual = values->view(output.substr(0, at));
                const std::string mismatch = kindedMismatch(kindedJsonOf(output.substr(at + 1)), actual, true);
                EXPECT_TRUE(mismatch.empty()) << output.substr(0, at) << ": " << mismatch << "\n  is "
                                              << kindedText(actual);
            }
            if (hooks.afterCall) {
                hooks.afterCall(e, label.substr(0, label.find('(')), result);
            }
        } else {
            ASSERT_TRUE(hooks.setup && hooks.setup(key, value)) << c.places[i] << ": no line " << key;
        }
    }
}

}  // namespace pimav::detail
