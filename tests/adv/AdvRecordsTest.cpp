#include <gtest/gtest.h>

#include <stdexcept>

#include "pimAvMngApi/adv/AdvSessionsDb.h"
#include "pimAvMngApi/platform/SystemDefaultCfg.h"
#include "support/LogCapture.h"

namespace {

std::string ipError(const std::string& text) {
    return "Error parsing IP [" + text + "]: invalid IP address";
}

}  // namespace

TEST(AdvertisementStateTest, WordsAndReadingRule) {
    for (auto c : {std::make_tuple(0, "OK", 0), std::make_tuple(1, "Stale", 1),
                   std::make_tuple(7, "Undefined", 0), std::make_tuple(1, "", 0)}) {
        Json::Value doc(Json::objectValue);
        AdvertisementState(std::get<0>(c)).Serialize(doc);
        if (*std::get<1>(c) == '\0') {
            doc.removeMember("status");  // a missing key reads as OK
        } else {
            EXPECT_EQ(doc["status"].asString(), std::get<1>(c));
        }
        AdvertisementState back(AdvertisementState::STALE);
        back.Deserialize(doc);
        EXPECT_EQ(back.getState(), std::get<2>(c)) << std::get<1>(c);
    }
}

// Each URL is applied to an entry that already holds host 10.9.9.9 and port 77; the
// board's own addresses are 10.0.0.1 and 10.9.9.9. Locality is asked whenever the URL
// has a "//", also after a failed host parse.
TEST(AdvSessionEntryTest, SourceUrlDerivesHostAndPort) {
    IpAddress local1, local2;
    local1.fromString("10.0.0.1");
    local2.fromString("10.9.9.9");
    SystemDefaultCfg::getInstance()->setLocalIpAddrs({local1, local2});
    struct Case {
        std::string url;
        const char* host;
        uint16_t port;
        const char* badHost;  // host text of the expected error line
        bool local;
    };
    for (const Case& c : std::vector<Case>{
             {"rtsp://192.168.1.20:554/stream", "192.168.1.20", 554, nullptr, false},
             {"rtsp://192.168.1.20/stream", "10.9.9.9", 77, "192.168.1.20/stream", true},
             {"", "10.9.9.9", 77, nullptr, false},
             {"sap:239.255.255.255:9875/x", "10.9.9.9", 77, nullptr, false},
             {"rtsp://10.0.0.1:554", "10.0.0.1", 77, nullptr, true},
             {"rtsp://10.0.0.1:0x22A/x", "10.0.0.1", 554, nullptr, true},
             {"rtsp://10.0.0.1:01052/x", "10.0.0.1", 554, nullptr, true},
             {"rtsp://10.0.0.1:70000/x", "10.0.0.1", 4464, nullptr, true},
             {"rtsp://10.0.0.1: -1/x", "10.0.0.1", 65535, nullptr, true},
             {"rtsp://10.0.0.1:99abc/x", "10.0.0.1", 99, nullptr, true},
             {"http://a.b:80/x", "10.9.9.9", 80, "a.b", true},
             {"rtsp://:80/x", "10.9.9.9", 80, "", true},
         }) {
        AdvSessionEntry entry;
        entry.m_host_ip.fromString("10.9.9.9");
        entry.m_host_port = 77;
        LogCapture capture;
        EXPECT_EQ(entry.setSourceUrl(c.url), 0);
        EXPECT_EQ(entry.getSourceUrl(), c.url);
        EXPECT_EQ(entry.getHostIp().toString(), c.host) << c.url;
        EXPECT_EQ(entry.getHostPort(), c.port) << c.url;
        EXPECT_EQ(entry.isHostLocal(), c.local) << c.url;
        EXPECT_EQ(capture.at(2),
                  c.badHost ? std::vector<std::string>{ipError(c.badHost)} : std::vector<std::string>{})
            << c.url;
    }
    SystemDefaultCfg::getInstance()->resetLocalIpAddrs();
}

TEST(AdvSessionEntryTest, PortWithoutNumberThrowsBeforeTheUrlIsStored) {
    for (const char* url : {"rtsp://10.0.0.1:abc/x", "rtsp://10.0.0.1:/x", "rtsp://10.0.0.1:99999999999/x"}) {
        AdvSessionEntry entry;
        entry.setSourceUrl("rtsp://10.1.1.1:5/old");
        try {
            entry.setSourceUrl(url);
            ADD_FAILURE() << "no exception for " << url;
        } catch (const std::logic_error& e) {  // invalid_argument, or out_of_range for the long number
            EXPECT_STREQ(e.what(), "stoi");
        }
        EXPECT_EQ(entry.getSourceUrl(), "rtsp://10.1.1.1:5/old");
        EXPECT_EQ(entry.getHostPort(), 5);
        EXPECT_EQ(entry.getHostIp().toString(), "10.0.0.1");  // read before the port failed
    }
}

TEST(AdvSessionEntryTest, JsonForm) {
    AdvSessionEntry entry;
    entry.m_session.m_session_id = 18446744073709551615ULL;
    entry.m_session.m_info = "Mix";
    entry.setSourceUrl("rtsp://192.168.1.20:554/stream");
    entry.m_host_is_local = true;
    entry.setSdp("v=0\n");
    entry.setInUse(true);
    entry.setStatus(AdvertisementState::STALE);
    Json::Value doc;
    entry.Serialize(doc);
    EXPECT_TRUE(doc["session-id"].isUInt64());
    EXPECT_EQ(doc["session-id-str"].asString(), "18446744073709551615");
    EXPECT_EQ(doc["host"]["ip"].asString(), "192.168.1.20");
    EXPECT_EQ(doc["host"]["address"].asString(), "local");
    EXPECT_EQ(doc["status"].asString(), "Stale");
    EXPECT_EQ(doc["session"]["info"].asString(), "Mix");
    EXPECT_EQ(doc.getMemberNames(),
              (std::vector<std::string>{"host", "inuse", "sdp-raw", "session", "session-id", "session-id-str",
                                        "status", "url"}));

    AdvSessionEntry back;
    back.Deserialize(doc);
    EXPECT_EQ(back.getHostPort(), 0);  // the port has no JSON form
    Json::Value again;
    back.Serialize(again);
    EXPECT_EQ(again, doc);

    // "remote" keeps a local mark, a bad address is logged and kept, "url" is not parsed.
    doc["status"] = "Undefined";
    doc["host"]["ip"] = "300.1.1.1";
    doc["host"]["address"] = "remote";
    doc["url"] = "rtsp://10.7.7.7:1/x";
    LogCapture capture;
    AdvSessionEntry fresh;
    fresh.Deserialize(doc);
    back.Deserialize(doc);
    EXPECT_EQ(capture.at(2), std::vector<std::string>(2, ipError("300.1.1.1")));
    EXPECT_EQ(back.getStatus().getState(), AdvertisementState::OK);
    EXPECT_TRUE(back.isHostLocal());
    EXPECT_FALSE(fresh.isHostLocal());
    EXPECT_EQ(back.getHostIp().toString(), "192.168.1.20");
    EXPECT_EQ(fresh.getHostIp().toString(), "0.0.0.0");
}

TEST(AdvSessionsDbTest, ArrayFormOrderAndDuplicates) {
    AdvSessionsDb db;
    Json::Value target;
    db.Serialize(target);
    EXPECT_TRUE(target.isNull());
    for (session_id_t id : {9u, 3u}) {
        db.m_entries[id].m_session.m_session_id = id;
    }
    db.Serialize(target);
    ASSERT_EQ(target.size(), 2u);
    EXPECT_EQ(target[0]["session-id"].asUInt64(), 3u);
    EXPECT_EQ(target[1]["session-id"].asUInt64(), 9u);

    Json::Value twice(Json::arrayValue);
    for (const char* url : {"first", "second"}) {
        Json::Value element;
        element["session"]["id"] = Json::UInt64(5);
        element["url"] = url;
        twice.append(element);
    }
    LogCapture capture;
    db.Deserialize(twice);
    EXPECT_EQ(capture.at(5), std::vector<std::string>{
                                 "Cleaning advertisements database and loading it from the received json"});
    ASSERT_EQ(db.m_entries.size(), 1u);
    EXPECT_EQ(db.m_entries.at(5).getSourceUrl(), "first");
    Json::Value null;
    db.Deserialize(null);
    EXPECT_TRUE(db.m_entries.empty());
}
