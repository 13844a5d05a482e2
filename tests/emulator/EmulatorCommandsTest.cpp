// The emulator's command handlers in-process, with examples/advertised as its advertise
// folder: one accepted request of every command, receivers of advertised sessions, and the
// SDP it writes for its senders.

#include <gtest/gtest.h>

#include <set>

#include "EmulatorHarness.h"
#include "ServedEmulator.h"
#include "pimAvMngApi/sdp/SdpConverter.h"
#include "platform/IpcWire.h"
#include "support/CommandRows.h"
#include "support/JsonText.h"
#include "support/TestData.h"

using namespace pimav::detail;

namespace {

const char* const kStudioUrl = "sap://192.168.1.50:9875/studio-a";

std::string idDoc(uint64_t id) { return "{\"id\":" + std::to_string(id) + "}"; }

class EmulatorCommands : public ::testing::Test {
protected:
    EmulatorCommands()
        : m_emulator(freshOptions("commands", std::string(PIMAV_SOURCE_DIR) + "/examples/advertised")) {}
    uint64_t addSender(const std::string& json) { return call(m_emulator, 2, json)["session-id"].asUInt64(); }

    Emulator m_emulator;
};

// The rows of tests/data/emulator/pass-through.tsv of one part, {id} standing for `session`.
void runRows(Emulator& emulator, const std::string& part, uint64_t session) {
    for (const DataRow& row : dataRows("emulator/pass-through.tsv")) {
        const std::vector<std::string>& f = row.fields;
        if (f[0] != part) {
            continue;
        }
        SCOPED_TRACE(row.where + " command " + f[1]);
        std::string text = f[2] == "-" ? "" : f[2];
        for (size_t at = text.find("{id}"); at != std::string::npos; at = text.find("{id}")) {
            text.replace(at, 4, std::to_string(session));
        }
        const Json::Value reply = call(emulator, static_cast<unsigned>(std::stoul(f[1])), text);
        ASSERT_TRUE(reply.isObject());
        EXPECT_FALSE(reply.isMember("error")) << renderReply(reply);
        EXPECT_TRUE(f[3] == "-" ? reply.empty() : reply.isMember(f[3])) << renderReply(reply);
    }
}

TEST_F(EmulatorCommands, EveryPassThroughCommandIsAnswered) {
    std::set<unsigned> ids, withMethod;
    for (const DataRow& row : dataRows("emulator/pass-through.tsv")) {
        ids.insert(static_cast<unsigned>(std::stoul(row.fields[1])));
    }
    for (const CommandRowText& row : commandRows()) {
        if (row.hasMethod()) {
            withMethod.insert(row.id);
        }
    }
    EXPECT_EQ(ids, withMethod);
    const char* const sender = R"({"name":"e2e","audio-sources":[{"codec":"L24","ptime":1000,"channel-freq":48000,
                                   "channel-list":[{"channel":0},{"channel":1}]}]})";
    runRows(m_emulator, "device", addSender(sender));
    // Commands that need a live session run against a fresh sender.
    runRows(m_emulator, "session", addSender(R"({"name":"rows","audio-sources":[{"channel-list":[{"channel":0}]}]})"));
}

TEST_F(EmulatorCommands, ReceiverTakesAStreamOfAnAdvertisedSession) {
    const std::string request = R"({"name":"listener","channel-list":[{"channel":0},{"channel":1}],"rem-sid":)";
    const Json::Value reply = call(m_emulator, 3, request + R"({"id":1311738121,"media-idx":0}})");
    const uint64_t id = reply["session-id"].asUInt64();
    ASSERT_NE(id, 0u) << renderReply(reply);

    // The receiver's stream carries the advertised address and port; its SDP is the advertised text.
    const Json::Value info = call(m_emulator, 15, idDoc(id));
    EXPECT_EQ(info["rtsp-url"].asString(), kStudioUrl);
    ASSERT_EQ(info["session-list"].size(), 1u) << renderReply(info);
    EXPECT_EQ(info["session-list"][0]["class"].asString(), "receiver");
    EXPECT_EQ(info["session-list"][0]["udp"]["destination"].asInt(), 5004) << renderReply(info);
    EXPECT_NE(call(m_emulator, 0, idDoc(id))["sdp"].asString().find("s=Studio A stereo"), std::string::npos);

    const struct {
        const char* remote;
        int code;
    } refused[] = {{R"({"id":4242,"media-idx":0})", -3}, {R"({"id":1311738121,"media-idx":7})", -1},
                   {R"({"id":0,"media-idx":0})", -14}};
    for (const auto& c : refused) {
        EXPECT_EQ(call(m_emulator, 3, request + c.remote + "}")["error"]["code"].asInt(), c.code) << c.remote;
    }

    // Withdrawing an advertisement in use keeps it until the receiver goes.
    EXPECT_FALSE(call(m_emulator, 42, idDoc(1311738121)).isMember("error"));  // Studio A
    EXPECT_EQ(call(m_emulator, 42, idDoc(4242))["error"]["code"].asInt(), -3);
    EXPECT_EQ(call(m_emulator, 42, idDoc(0))["error"]["code"].asInt(), -14);
    EXPECT_NE(renderReply(call(m_emulator, 7)).find(kStudioUrl), std::string::npos);
    ASSERT_FALSE(call(m_emulator, 4, idDoc(id)).isMember("error"));
    EXPECT_EQ(renderReply(call(m_emulator, 7)).find(kStudioUrl), std::string::npos);
}

// A user's SDP, for a receiver (3) or stored for a session (1), is checked and every
// problem returned.
TEST_F(EmulatorCommands, UserSdpIsCheckedAndEveryProblemReturned) {
    const std::string bad = R"("v=0\r\no=- 77 77 IN IP4 10.0.0.1\r\ns=bad\r\nt=0 0\r\nm=audio 5004 RTP/AVP 96\r\n")";
    const Json::Value refused = call(m_emulator, 3, R"({"name":"rx","user-sdp":)" + bad + "}");
    EXPECT_EQ(refused["error"]["code"].asInt(), -1) << renderReply(refused);
    EXPECT_GE(refused["error"]["user-messages"].size(), 2u) << renderReply(refused);
    const uint64_t id = addSender(R"({"name":"tx","audio-sources":[{"channel-list":[{"channel":0}]}]})");
    EXPECT_EQ(call(m_emulator, 1, "{\"id\":" + std::to_string(id) + ",\"sdp\":" + bad + "}")["error"]["code"], -1);
    Json::Value save;
    save["id"] = Json::UInt64(id);
    save["sdp"] = fileText(std::string(PIMAV_SOURCE_DIR) + "/examples/advertised/commentary.sdp");
    EXPECT_EQ(renderReply(call(m_emulator, 1, renderReply(save))), "{}");
    EXPECT_NE(call(m_emulator, 0, idDoc(id))["sdp"].asString().find("s=Commentary"), std::string::npos);
}

// The SDP written for a sender is read back by the library's parser into the stream the
// request described; an update bumps the version in the origin line.
TEST_F(EmulatorCommands, SenderSdpParsesBackIntoTheRequestedStream) {
    const struct {
        const char* request;
        SdpMedia::Type type;
        const char* codec;
        unsigned channels;
        float ptime;
    } cases[] = {
        {R"({"name":"talker","audio-sources":[{"codec":"L16","ptime":125,"channel-freq":48000,"transport":"239.1.1.1",
             "channel-list":[{"channel":0},{"channel":1},{"channel":2}]}],"video-sources":[{"name":"camera"}]})",
         SdpMedia::AUDIO, "L16", 3, 0.125f},
        {R"({"name":"camera","video-sources":[{"name":"camera","transport":"239.1.1.2"}]})", SdpMedia::VIDEO, "raw", 1,
         0.0f},
    };
    for (const auto& c : cases) {
        const uint64_t id = addSender(c.request);
        ASSERT_NE(id, 0u) << c.request;
        const std::string text = call(m_emulator, 0, idDoc(id))["sdp"].asString();
        SdpConverter converter;
        ASSERT_EQ(converter.parseSdp(text), 0) << text;
        SdpSession session;
        converter.getSdpConfig(session);
        ASSERT_EQ(session.m_media.size(), 1u) << text;
        const SdpMedia& media = session.m_media[0];
        EXPECT_EQ(media.m_type, c.type) << text;
        ASSERT_EQ(media.m_rtp_maps.size(), 1u) << text;
        EXPECT_EQ(media.m_rtp_maps[0].m_codec.toString(), c.codec) << text;
        EXPECT_EQ(media.m_rtp_maps[0].m_number_channels, c.channels) << text;
        EXPECT_FLOAT_EQ(media.m_ptime, c.ptime) << text;
    }
    const std::string id = std::to_string(call(m_emulator, 5)["list"][0]["id"].asUInt64());
    ASSERT_FALSE(
        call(m_emulator, 8, "{\"session-id\":" + id + R"(,"name":"talker 2","audio-sources":[{"codec":"L24"}]})")
            .isMember("error"));
    const std::string updated = call(m_emulator, 0, "{\"id\":" + id + "}")["sdp"].asString();
    EXPECT_NE(updated.find(" " + id + " 2 IN IP4"), std::string::npos) << updated;
    EXPECT_NE(updated.find("s=talker 2"), std::string::npos) << updated;
}

// The server refuses a request above its size limit (the default one) and text that is not
// UTF-8, which it does not echo back; the connection goes on.
TEST(EmulatorServer, OversizedOrNonUtf8RequestsAreRefused) {
    ServedEmulator served;
    zmq::context_t context;
    zmq::socket_t socket(context, zmq::socket_type::req);
    socket.set(zmq::sockopt::linger, 0);
    socket.set(zmq::sockopt::rcvtimeo, 5000);
    socket.connect("tcp://127.0.0.1:" + std::to_string(served.port()));
    const struct {
        std::string request;
        int code;
    } rows[] = {
        {"{\"pad\":\"" + std::string(kDefaultMaxRequestBytes, ' ') + "\"}", kRequestTooLarge},
        {"{\"name\":\"bad \xff\xfe text\",\"audio-sources\":[{\"channel-list\":[{\"channel\":0}]}]}", kUnreadableRequest},
        {"{\"name\":\"good\",\"audio-sources\":[{\"channel-list\":[{\"channel\":0}]}]}", 0},
    };
    for (const auto& row : rows) {
        socket.send(zmq::buffer(encodeCommandId(2)), zmq::send_flags::sndmore);
        socket.send(zmq::buffer(row.request), zmq::send_flags::none);
        zmq::message_t reply;
        ASSERT_TRUE(socket.recv(reply)) << row.code;
        EXPECT_EQ(reply.to_string().find('\xff'), std::string::npos) << reply.to_string();
        EXPECT_EQ(jsonOf(reply.to_string())["error"]["code"].asInt(), row.code) << reply.to_string().substr(0, 300);
    }
}

}  // namespace
