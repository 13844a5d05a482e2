// The SDP side of the emulator, end to end: advertised sessions loaded from a folder,
// receivers taken from them or from the user's SDP, the SDP of sender sessions, and the
// two commands only the device itself sends (1: save SDP info, 42: withdraw an
// advertisement).

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdio>
#include <fstream>

#include "EmulatorProcess.h"
#include "pimAvMngApi/sdp/SdpConverter.h"

using namespace pimav::detail;


namespace {

const char* const kStudioUrl = "sap://192.168.1.50:9875/studio-a";

Json::Value doc(const std::string& text) { return parse(text); }

// The id of the advertised session with `url`, 0 when the list has none.
uint64_t advertisedId(const EmulatorProcess& emulator, const std::string& url) {
    const Json::Value list = emulator.call(7);
    for (const auto& entry : list["list"]) {
        if (entry["url"].asString() == url) {
            return entry["session-id"].asUInt64();
        }
    }
    return 0;
}

class Advertised : public ::testing::Test {
protected:
    void SetUp() override {
        m_folder = makeTempDir("advertise");
        for (const char* name : {"commentary.sdp", "sap:%2F%2F192.168.1.50:9875%2Fstudio-a.sdp"}) {
            std::ifstream in(sourcePath(std::string("examples/advertised/") + name));
            std::ofstream(m_folder + "/" + name) << in.rdbuf();
        }
        m_emulator = std::make_unique<EmulatorProcess>("", std::vector<std::string>{"--advertise", m_folder});
    }

    std::string m_folder;
    std::unique_ptr<EmulatorProcess> m_emulator;
};

TEST_F(Advertised, FolderFilesBecomeAdvertisedSessionsNamedByTheirUrl) {
    const Json::Value list = m_emulator->call(7);
    ASSERT_EQ(list["list"].size(), 2u) << compact(list);
    EXPECT_NE(advertisedId(*m_emulator, kStudioUrl), 0u) << compact(list);
    EXPECT_NE(advertisedId(*m_emulator, "file:" + m_folder + "/commentary.sdp"), 0u) << compact(list);

    // A file that goes away is withdrawn on reload, a new one appears; refused files are skipped.
    std::remove((m_folder + "/commentary.sdp").c_str());
    std::ofstream(m_folder + "/broken.sdp") << "v=0\r\ns=no origin\r\n";
    std::ifstream in(sourcePath("examples/advertised/rtsp:%2F%2F192.168.1.51:554%2Fcontrol-room.sdp"));
    std::ofstream(m_folder + "/rtsp:%2F%2F192.168.1.51:554%2Fcontrol-room.sdp") << in.rdbuf();
    // Both ways to reload: a refresh request, and SIGHUP (seen between requests).
    const Json::Value refreshed = m_emulator->call(7, doc(R"({"refresh":true})"));
    ASSERT_EQ(refreshed["list"].size(), 2u) << compact(refreshed);
    EXPECT_NE(advertisedId(*m_emulator, "rtsp://192.168.1.51:554/control-room"), 0u);
    EXPECT_EQ(advertisedId(*m_emulator, "file:" + m_folder + "/commentary.sdp"), 0u);

    std::rename((m_folder + "/sap:%2F%2F192.168.1.50:9875%2Fstudio-a.sdp").c_str(), (m_folder + "/x.sdp.old").c_str());
    m_emulator->hangUp();
    Json::Value after;
    for (int i = 0; i < 100 && after["list"].size() != 1; ++i) {
        usleep(20000);
        after = m_emulator->call(7);
    }
    EXPECT_EQ(after["list"].size(), 1u) << compact(after);
}

TEST_F(Advertised, ReceiverTakesAStreamOfAnAdvertisedSession) {
    const uint64_t remote = advertisedId(*m_emulator, kStudioUrl);
    ASSERT_NE(remote, 0u);
    Json::Value request = doc(R"({"name":"listener","channel-list":[{"channel":0},{"channel":1}]})");
    request["rem-sid"]["id"] = Json::UInt64(remote);
    request["rem-sid"]["media-idx"] = 0;
    const Json::Value reply = m_emulator->call(3, request);
    const uint64_t id = reply["session-id"].asUInt64();
    ASSERT_NE(id, 0u) << compact(reply);

    // The receiver's stream carries the advertised address and port; its SDP is the advertised text.
    const Json::Value info = m_emulator->call(15, doc("{\"id\":" + std::to_string(id) + "}"));
    EXPECT_EQ(info["rtsp-url"].asString(), kStudioUrl);
    EXPECT_EQ(info["remote-sid"].asUInt64(), remote);
    ASSERT_EQ(info["session-list"].size(), 1u) << compact(info);
    EXPECT_EQ(info["session-list"][0]["class"].asString(), "receiver");
    EXPECT_EQ(info["session-list"][0]["udp"]["destination"].asInt(), 5004) << compact(info);
    EXPECT_NE(m_emulator->call(0, doc("{\"id\":" + std::to_string(id) + "}"))["sdp"].asString().find("s=Studio A stereo"),
              std::string::npos);

    struct Case {
        uint64_t remote;
        unsigned media;
        int code;
    };
    for (const Case& c : {Case{4242, 0, -3}, Case{remote, 7, -1}, Case{0, 0, -14}}) {
        request["rem-sid"]["id"] = Json::UInt64(c.remote);
        request["rem-sid"]["media-idx"] = c.media;
        EXPECT_EQ(m_emulator->call(3, request)["error"]["code"].asInt(), c.code) << c.remote << "/" << c.media;
    }

    // Withdrawing an advertisement in use keeps it until the receiver goes.
    EXPECT_EQ(m_emulator->call(42, doc("{\"id\":" + std::to_string(remote) + "}")).isMember("error"), false);
    EXPECT_EQ(m_emulator->call(42, doc("{\"id\":4242}"))["error"]["code"].asInt(), -3);
    EXPECT_EQ(m_emulator->call(42, doc("{\"id\":0}"))["error"]["code"].asInt(), -14);
    ASSERT_FALSE(m_emulator->call(4, doc("{\"id\":" + std::to_string(id) + "}")).isMember("error"));
    EXPECT_EQ(advertisedId(*m_emulator, kStudioUrl), 0u);
}

TEST_F(Advertised, UserSdpIsCheckedAndEveryProblemReturned) {
    Json::Value request;
    request["name"] = "hand written";
    request["user-sdp"] = "v=0\r\no=- 77 77 IN IP4 10.0.0.1\r\ns=bad\r\nt=0 0\r\nm=audio 5004 RTP/AVP 96\r\n"
                          "a=rtpmap:96 L24/48000/2\r\n";
    const Json::Value refused = m_emulator->call(3, request);
    ASSERT_EQ(refused["error"]["code"].asInt(), -1) << compact(refused);
    const std::string messages = compact(refused["error"]["user-messages"]);
    EXPECT_NE(messages.find("Destination IP is a mandatory field in the SDP."), std::string::npos) << messages;
    EXPECT_NE(messages.find("Reference clock must be PTP."), std::string::npos) << messages;

    std::ifstream in(sourcePath("examples/advertised/commentary.sdp"));
    request["user-sdp"] = std::string(std::istreambuf_iterator<char>(in), {});
    const Json::Value accepted = m_emulator->call(3, request);
    ASSERT_NE(accepted["session-id"].asUInt64(), 0u) << compact(accepted);

    // Command 1 stores a checked SDP text for a session and refuses a bad one.
    Json::Value save;
    save["id"] = accepted["session-id"];
    save["sdp"] = "v=0\r\n";
    EXPECT_EQ(m_emulator->call(1, save)["error"]["code"].asInt(), -1);
    save["sdp"] = request["user-sdp"];
    EXPECT_FALSE(m_emulator->call(1, save).isMember("error"));
}

// The SDP that the emulator writes for a sender is read back by the library's parser
// into the stream the request described.
TEST_F(Advertised, SenderSdpParsesBackIntoTheRequestedStream) {
    struct Case {
        const char* request;
        SdpMedia::Type type;
        const char* codec;
        unsigned channels;
        float ptime;
    };
    const Case cases[] = {
        {R"({"name":"talker","audio-sources":[{"codec":"L16","ptime":125,"channel-freq":48000,"transport":"239.1.1.1",
             "channel-list":[{"channel":0},{"channel":1},{"channel":2}]}],"video-sources":[{"name":"camera"}]})",
         SdpMedia::AUDIO, "L16", 3, 0.125f},
        {R"({"name":"camera","video-sources":[{"name":"camera","transport":"239.1.1.2"}]})", SdpMedia::VIDEO, "raw", 1,
         0.0f},
    };
    for (const Case& c : cases) {
        const Json::Value added = m_emulator->call(2, doc(c.request));
        const uint64_t id = added["session-id"].asUInt64();
        ASSERT_NE(id, 0u) << compact(added);
        const std::string text = m_emulator->call(0, doc("{\"id\":" + std::to_string(id) + "}"))["sdp"].asString();
        SdpConverter converter;
        ASSERT_EQ(converter.parseSdp(text), 0) << text;
        SdpSession session;
        converter.getSdpConfig(session);
        EXPECT_EQ(session.m_session_id, id);
        EXPECT_EQ(session.m_info, added["name"].asString());
        ASSERT_EQ(session.m_media.size(), 1u) << text;
        const SdpMedia& media = session.m_media[0];
        EXPECT_EQ(media.m_type, c.type) << text;
        ASSERT_EQ(media.m_rtp_maps.size(), 1u) << text;
        EXPECT_EQ(media.m_rtp_maps[0].m_codec.toString(), c.codec) << text;
        EXPECT_EQ(media.m_rtp_maps[0].m_number_channels, c.channels) << text;
        EXPECT_FLOAT_EQ(media.m_ptime, c.ptime) << text;
    }

    // An update bumps the version in the origin line.
    const std::string id = std::to_string(m_emulator->call(5)["list"][0]["id"].asUInt64());
    ASSERT_FALSE(m_emulator->call(8, doc("{\"session-id\":" + id +
                                          ",\"name\":\"talker 2\",\"audio-sources\":[{\"codec\":\"L24\"}]}"))
                     .isMember("error"));
    const std::string updated = m_emulator->call(0, doc("{\"id\":" + id + "}"))["sdp"].asString();
    EXPECT_NE(updated.find(" " + id + " 2 IN IP4"), std::string::npos) << updated;
    EXPECT_NE(updated.find("s=talker 2"), std::string::npos) << updated;
}

}  // namespace
