#include <gtest/gtest.h>

#include <stdexcept>

#include "pimAvMngApi/adv/AdvSessions.h"
#include "support/Aes67Sdp.h"
#include "support/LogCapture.h"

// Reaches table states that advertisements cannot produce (a session without media).
class AdvSessionsTestAccess {
public:
    static void dropMedia(AdvSessions& table, session_id_t id) {
        table.m_db.m_entries.at(id).m_session.m_media.clear();
    }
};

namespace {

using Lines = std::vector<std::string>;

const char* const kUrl = "rtsp://192.168.1.20:554/x";

IpAddress ip(const char* text) {
    IpAddress address;
    EXPECT_TRUE(address.fromString(text));
    return address;
}

// Adds an advertisement that must be accepted; returns `updated`.
bool add(AdvSessions& table, const Aes67Sdp& sdp, const std::string& url = kUrl) {
    session_id_t id = 0;
    bool updated = false;
    EXPECT_EQ(table.addAdvertisedSession(url, sdp.text(), id, updated), 0) << sdp.text();
    EXPECT_EQ(id, sdp.id);
    return updated;
}

}  // namespace

// One row per transition of an id's life: the state before, the event, and what the
// table holds afterwards.
TEST(AdvSessionsTest, Lifecycle) {
    enum Before { None, TwoMarks, Ok, OkInUse, StaleInUse };
    enum Event { Add, Use, Unuse, RemoveId, RemoveHost, RemoveName };
    struct Row {
        const char* what;
        Before before;
        Event event;
        bool flagIn;  // initial value of `updated` / `removed`
        bool exists;
        int32_t state;
        bool inUse;
        bool flagOut;
        size_t pending;
        long long result;
        Lines log5;  // the event's level-5 lines
    };
    const std::string stored = "Advertised:: Session 100 stored. Url rtsp://192.168.1.20:554/y";
    const std::string marked = "Advertised:: Session 100 was already marked as in use. new array size 1.";
    const std::string pending = "Advertised:: Session not found. adding to the pending list 100 - list size ";
    const std::string updated = "Advertised:: Session 100 Updated. status: ";
    const std::string used = "Advertised:: Setting session 100 as used";
    const std::string unused = "Advertised:: Setting session 100 as unused";
    const std::string removed = "Advertised:: Session 100 removed.";
    const std::string byHost =
        "Advertised:: Session 100 removed. Host Ip 192.168.1.20 port 554 and Name [Row]";
    const std::string seen =
        "Advertised:: Session 100 found. Host Ip 192.168.1.20 Name [Row]. Candidate to be removed.";
    const std::string named =
        "Advertised:: we found 1 session with name [Row], id 100 so we are going to remove it.";
    const std::string stale = "Advertised:: Session 100 is now stale.";
    const std::string notFound = "Advertised:: Unable to find session 100";
    const std::string noHost =
        "Advertised:: Unable to find any session from host ip 192.168.1.20 port 554 and Name [Row]";
    const std::string noName = "Advertised:: Unable to find any session with Name [Row]";
    const Row rows[] = {
        {"first advertisement", None, Add, true, true, 0, false, false, 0, 0, {stored}},
        {"advertised after two marks", TwoMarks, Add, true, true, 0, true, false, 1, 0, {marked, stored}},
        {"mark unknown id", None, Use, true, false, 0, false, false, 1, 0, {pending + "1"}},
        {"unmark pending id", TwoMarks, Unuse, true, false, 0, false, false, 0, 0, {pending + "0"}},
        {"advertised again", Ok, Add, false, true, 0, false, true, 0, 0, {updated + "OK"}},
        {"stale advertised again", StaleInUse, Add, false, true, 0, true, true, 0, 0, {updated + "Stale"}},
        {"mark entry", Ok, Use, true, true, 0, true, true, 0, 0, {used}},
        {"mark stale entry", StaleInUse, Use, true, true, 1, true, true, 0, 0, {used}},
        {"unmark entry", OkInUse, Unuse, true, true, 0, false, true, 0, 0, {unused}},
        {"unmark stale entry", StaleInUse, Unuse, false, false, 0, false, true, 0, 0, {unused, removed}},
        {"remove by id", Ok, RemoveId, false, false, 0, false, false, 0, 100, {removed}},
        {"remove by host", Ok, RemoveHost, false, false, 0, false, false, 0, 100, {byHost, removed}},
        {"remove by name", Ok, RemoveName, false, false, 0, false, false, 0, 100, {seen, named, removed}},
        {"remove used by id", OkInUse, RemoveId, false, true, 1, true, false, 0, 0, {stale}},
        {"remove used by host", OkInUse, RemoveHost, false, true, 1, true, false, 0, 0, {byHost, stale}},
        {"remove used by name", OkInUse, RemoveName, false, true, 1, true, false, 0, 0, {seen, named, stale}},
        {"remove stale by id", StaleInUse, RemoveId, false, true, 1, true, false, 0, 0, {stale}},
        {"remove unknown id", None, RemoveId, false, false, 0, false, false, 0, 0, {notFound}},
        {"remove unknown host", None, RemoveHost, false, false, 0, false, false, 0, 0, {noHost}},
        {"remove unknown name", None, RemoveName, false, false, 0, false, false, 0, 0, {noName}},
    };

    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        AdvSessions table;
        Aes67Sdp sdp = Aes67Sdp{100, "Row"};
        bool scratch = false;
        if (row.before == TwoMarks) {
            table.setSessionAsUsed(100, true, scratch);
            table.setSessionAsUsed(100, true, scratch);
        }
        if (row.before >= Ok) {
            add(table, sdp);
        }
        if (row.before >= OkInUse) {
            table.setSessionAsUsed(100, true, scratch);
        }
        if (row.before == StaleInUse) {
            table.removeAdvertisedSession(100);
        }

        LogCapture capture;
        bool flag = row.flagIn;
        long long result = -99;
        sdp.version = 2;
        session_id_t id = 0;
        switch (row.event) {
            case Add:
                result = table.addAdvertisedSession("rtsp://192.168.1.20:554/y", sdp.text(), id, flag);
                EXPECT_EQ(id, 100u);
                break;
            case Use:
            case Unuse:
                result = table.setSessionAsUsed(100, row.event == Use, flag);
                break;
            case RemoveId:
                result = static_cast<long long>(table.removeAdvertisedSession(100));
                break;
            case RemoveHost:
                result =
                    static_cast<long long>(table.removeAdvertisedSession(ip("192.168.1.20"), "Row", 554));
                break;
            case RemoveName:
                result = static_cast<long long>(table.removeAdvertisedSessionByName("Row"));
                break;
        }
        EXPECT_EQ(result, row.result);
        EXPECT_EQ(flag, row.flagOut);
        EXPECT_EQ(table.getPendingCount(), row.pending);
        EXPECT_EQ(capture.at(5), row.log5);
        AdvertisementState state;
        EXPECT_EQ(table.getSessionStatus(100, state), row.exists ? 0 : -16);
        ASSERT_EQ(table.size(), row.exists ? 1u : 0u);
        if (row.exists) {
            AdvSessionEntry entry;
            ASSERT_EQ(table.getAdvertisementSessionEntry(100, entry), 0);
            EXPECT_EQ(state.getState(), row.state);
            EXPECT_EQ(entry.isInUse(), row.inUse);
            SdpSession session;
            ASSERT_EQ(table.getSdpSession(100, session), 0);
            EXPECT_EQ(session.m_session_version, row.event == Add ? 2u : 1u);
        }
    }
}

TEST(AdvSessionsTest, RemovalByNameNeedsAUniqueName) {
    AdvSessions table;
    Aes67Sdp other = Aes67Sdp{30, "Dup"};
    other.source = "10.0.0.30";
    add(table, Aes67Sdp{20, "Dup"});
    add(table, other, "rtsp://10.0.0.30:554/x");
    add(table, Aes67Sdp{10, "dup"});

    LogCapture capture;
    EXPECT_EQ(table.removeAdvertisedSessionByName("Dup"), 0u);
    EXPECT_EQ(
        capture.at(5),
        (Lines{"Advertised:: Session 20 found. Host Ip 192.168.1.20 Name [Dup]. Candidate to be removed.",
               "Advertised:: Session 30 found. Host Ip 10.0.0.30 Name [Dup]. Candidate to be removed.",
               "Advertised:: we found 2 session with the same name [Dup]. We are not going to remove any "
               "of them."}));
    EXPECT_EQ(table.size(), 3u);
    EXPECT_EQ(table.removeAdvertisedSessionByName("Du"), 0u);
    EXPECT_EQ(table.removeAdvertisedSessionByName("dup"), 10u);
    EXPECT_EQ(table.removeAdvertisedSession(30), 30u);
    EXPECT_EQ(table.removeAdvertisedSessionByName("Dup"), 20u);
    EXPECT_EQ(table.size(), 0u);
}

TEST(AdvSessionsTest, RemovalByHostSkipsSessionsWithoutMediaAndOtherPorts) {
    AdvSessions table;
    add(table, Aes67Sdp{5, "Row"});
    add(table, Aes67Sdp{6, "Row"}, "rtsp://192.168.1.20:555/x");
    add(table, Aes67Sdp{7, "Row"});
    AdvSessionsTestAccess::dropMedia(table, 5);
    EXPECT_EQ(table.removeAdvertisedSession(ip("192.168.1.20"), "Row", 554), 7u);
    EXPECT_EQ(table.removeAdvertisedSession(ip("192.168.1.20"), "Row", 554), 0u);
    EXPECT_EQ(table.removeAdvertisedSession(ip("192.168.1.20"), "Row", 555), 6u);
    EXPECT_EQ(table.size(), 1u);
}

TEST(AdvSessionsTest, GettersAndTheirCodes) {
    AdvSessions table;
    add(table, Aes67Sdp{0, "Zero"});
    add(table, Aes67Sdp{4, "Four"});
    AdvertisementState state(7);
    LogCapture capture;
    EXPECT_EQ(table.getSessionStatus(0, state), -14);
    EXPECT_EQ(table.getSessionStatus(5, state), -16);
    EXPECT_EQ(state.getState(), 7);
    EXPECT_EQ(table.getSessionStatus(4, state), 0);
    EXPECT_EQ(state.getState(), AdvertisementState::OK);
    EXPECT_TRUE(capture.lines().empty());

    std::string sdp = "keep";
    std::string url = "keep";
    EXPECT_EQ(table.getAdvertisedSdp(5, sdp, url), -3);
    EXPECT_EQ(sdp, "keep");
    AdvSessionEntry entry;
    EXPECT_EQ(table.getAdvertisementSessionEntry(6, entry), -3);
    SdpSession session;
    EXPECT_EQ(table.getSdpSession(7, session), -3);
    EXPECT_EQ(capture.at(5),
              (Lines{"Advertised:: Unable to find session 5", "Advertised:: Unable to find entry 6"}));

    EXPECT_EQ(table.getAdvertisedSdp(4, sdp, url), 0);
    EXPECT_EQ(sdp, (Aes67Sdp{4, "Four"}.text()));
    EXPECT_EQ(url, kUrl);
    EXPECT_EQ(table.getAdvertisementSessionEntry(4, entry), 0);
    EXPECT_EQ(entry.getHostPort(), 554);
    EXPECT_EQ(table.getSdpSession(4, session), 0);
    EXPECT_EQ(session.m_info, "Four");
    EXPECT_EQ(session.m_media.size(), 1u);
}

TEST(AdvSessionsTest, RejectedAdvertisementsChangeNothing) {
    AdvSessions table;
    add(table, Aes67Sdp{1, "Old"});
    session_id_t id = 77;
    bool updated = true;
    std::string noClock = Aes67Sdp{2, "Bad"}.text();
    noClock.erase(noClock.find("a=ts-refclk"));
    {
        LogCapture capture;
        EXPECT_LT(table.addAdvertisedSession(kUrl, noClock, id, updated), 0);
        EXPECT_EQ(capture.count("AdvSessions::addAdvertisedSession("), 1u);  // besides the parser's own
    }
    EXPECT_EQ(id, 77u);
    EXPECT_TRUE(updated);

    // A port without a number throws: a new entry is not stored; an existing (here
    // stale) one has its session replaced but keeps its URL and state.
    const char* badUrl = "rtsp://10.0.0.1:x/y";
    EXPECT_THROW(table.addAdvertisedSession(badUrl, (Aes67Sdp{2, "New"}.text()), id, updated),
                 std::invalid_argument);
    EXPECT_EQ(table.size(), 1u);
    bool removed = false;
    table.setSessionAsUsed(1, true, removed);
    table.removeAdvertisedSession(1);
    EXPECT_THROW(table.addAdvertisedSession(badUrl, (Aes67Sdp{1, "Renamed"}.text()), id, updated),
                 std::invalid_argument);
    AdvSessionEntry entry;
    ASSERT_EQ(table.getAdvertisementSessionEntry(1, entry), 0);
    EXPECT_EQ(entry.getSourceUrl(), kUrl);
    EXPECT_EQ(entry.getStatus().getState(), AdvertisementState::STALE);
    EXPECT_EQ(entry.m_session.m_info, "Renamed");
    EXPECT_EQ(table.removeAdvertisedSessionByName("Old"), 0u);  // removals see the new name
    table.setSessionAsUsed(1, false, removed);
    EXPECT_TRUE(removed);
    EXPECT_EQ(table.size(), 0u);
}

TEST(AdvSessionsTest, JsonListOfTheTable) {
    AdvSessions table;
    Json::Value reply;
    table.getAdvertisedSessionsJson(reply);
    EXPECT_TRUE(reply.isMember("list") && reply["list"].isNull());
    add(table, Aes67Sdp{9, "Nine"});
    add(table, Aes67Sdp{3, "Three"});
    table.getAdvertisedSessionsJson(reply);
    ASSERT_EQ(reply["list"].size(), 2u);
    EXPECT_EQ(reply["list"][0]["session-id-str"].asString(), "3");
    EXPECT_EQ(reply["list"][0]["url"].asString(), kUrl);
    EXPECT_EQ(reply["list"][1]["session"]["info"].asString(), "Nine");
}

TEST(AdvSessionsTest, DumpTableRows) {
    AdvSessions table;
    {
        LogCapture capture;
        table.dumpTable();
        EXPECT_EQ(capture.at(6).front(), "Advertised streams: 0");
        EXPECT_EQ(capture.at(6).size(), 2u);  // and the header row
    }
    const std::string dup = R"(v=0
o=- 200 1 IN IP4 192.168.1.20
s=Dup Audio
t=0 0
a=group:DUP p s
m=audio 5004 RTP/AVP 97
c=IN IP4 239.10.1.1/32
a=source-filter: incl IN IP4 239.10.1.1 192.168.1.20
a=rtpmap:97 L24/48000/8
a=ptime:0.125
a=ts-refclk:ptp=IEEE1588-2008:00-1D-C1-FF-FE-12-34-56:0
a=mid:p
m=audio 5006 RTP/AVP 98
c=IN IP4 239.20.1.1/32
a=source-filter: incl IN IP4 239.20.1.1 192.168.2.20
a=rtpmap:98 L16/48000/8
a=ptime:0.125
a=ts-refclk:ptp=IEEE1588-2008:00-1D-C1-FF-FE-12-34-56:0
a=mid:s
)";
    const std::string video = R"(v=0
o=- 18446744073709551615 1 IN IP4 192.168.1.30
s=Camera 1
t=0 0
m=video 50000 RTP/AVP 96
c=IN IP4 239.30.1.1/64
a=rtpmap:96 raw/90000
a=fmtp:96 sampling=YCbCr-4:2:2; width=1920; height=1080; exactframerate=50; depth=10; colorimetry=BT709
a=ts-refclk:ptp=IEEE1588-2008:00-1D-C1-FF-FE-12-34-56:0
)";
    session_id_t id = 0;
    bool updated = false;
    ASSERT_EQ(table.addAdvertisedSession(kUrl, dup, id, updated), 0);
    ASSERT_EQ(table.addAdvertisedSession("rtsp://192.168.1.30:554/v", video, id, updated), 0);

    LogCapture capture;
    table.dumpTable();
    EXPECT_EQ(capture.at(6),
              (Lines{"Advertised streams: 2",
                     "|       Session Id       | Media |  Src Ip         | Name                 | pktTime | "
                     "type  | Codec  | Ch | PType | UDP     |",
                     "|                    200 |  0. 0 |    192.168.1.20 |            Dup Audio | 0.125   | "
                     "audio |    L24 | 08 |    97 |    5004 |",
                     "|                    200 |  1. 0 |    192.168.2.20 |            Dup Audio | 0.125   | "
                     "audio |    L16 | 08 |    98 |    5006 |",
                     "|   18446744073709551615 |  0. 0 |    192.168.1.30 |             Camera 1 | 0.000   | "
                     "video |    raw | 01 |    96 |   50000 |"}));
    EXPECT_EQ(capture.lines().size(), 5u);
}
