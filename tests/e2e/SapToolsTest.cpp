// sdptool announce and listen as processes, on loopback: what a listener prints for two
// announcements (one compressed), a deletion and a packet it refuses.

#include <gtest/gtest.h>

#include <sstream>

#include "EmulatorProcess.h"
#include "sap/UdpSocket.h"

using namespace pimav::detail;

namespace {

std::string sdptool() { return binaryPath("tools/sdptool"); }
std::string corpus(const std::string& name) { return sourcePath("tests/data/sdp-corpus/" + name); }

}  // namespace

TEST(SapTools, ListenPrintsWhatAnnounceSends) {
    UdpEndpoint endpoint;
    ASSERT_TRUE(UdpEndpoint::parse("127.0.0.1:0", endpoint));
    endpoint.port = UdpSocket::listen(endpoint).localEndpoint().port;  // a free UDP port
    const std::string on = endpoint.toString();

    Background listen({sdptool(), "listen", "--on", on, "--json", "--seconds", "60"});
    ASSERT_TRUE(listen.waitForLines(1, 1, 10000)) << listen.text(1);
    EXPECT_EQ(listen.text(1), "sdptool: listening on " + on + "\n");

    const std::string audio = corpus("st2110-30-l24-48k-8ch-1ms-ttl128-framecount.sdp");
    const std::string remote = corpus("aes67-l16-48k-1ms-sap-remote-source.sdp");
    EXPECT_EQ(run({sdptool(), "announce", audio, "--to", on, "--count", "1"}).status, 0);
    EXPECT_EQ(run({sdptool(), "announce", remote, "--to", on, "--count", "1", "--compress"}).status, 0);
    EXPECT_EQ(run({sdptool(), "announce", audio, "--to", on, "--delete"}).status, 0);
    UdpSocket::connect(endpoint).send("\x20");
    ASSERT_TRUE(listen.waitForLines(0, 4, 10000)) << listen.text(0);
    EXPECT_EQ(listen.stop(), 0);

    std::istringstream lines(listen.text(0));
    std::vector<Json::Value> heard;
    for (std::string line; std::getline(lines, line);) {
        heard.push_back(parse(line));
    }
    ASSERT_EQ(heard.size(), 4u) << listen.text(0);
    struct Expected {
        const char* type;
        const char* name;
        bool compressed;
    };
    const Expected expected[] = {
        {"announce", "ST2110-30A", false},
        {"announce", "ALSA Source 2", true},
        {"delete", "ST2110-30A", false},
    };
    for (size_t i = 0; i < 3; ++i) {
        const Json::Value& h = heard[i];
        EXPECT_EQ(h["type"].asString(), expected[i].type) << compact(h);
        EXPECT_EQ(h["name"].asString(), expected[i].name) << compact(h);
        EXPECT_EQ(h["compressed"].asBool(), expected[i].compressed) << compact(h);
        EXPECT_EQ(h["origin"].asString(), "127.0.0.1");
        EXPECT_EQ(h["url"].asString(), "sap://" + on + "/" + h["hash"].asString());
        EXPECT_TRUE(h["sdp-ok"].asBool()) << compact(h);
    }
    EXPECT_EQ(heard[2]["hash"], heard[0]["hash"]);  // the deletion names the announcement
    EXPECT_NE(heard[1]["hash"], heard[0]["hash"]);
    EXPECT_EQ(compact(heard[3]), "{\"from\":\"" + heard[3]["from"].asString() +
                                     "\",\"reason\":\"truncated\",\"type\":\"refused\"}");
}
