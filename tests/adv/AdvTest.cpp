// Advertised sessions: the entry, its database and the table, driven by the scripts of
// tests/data/records/adv; the URL rules from tests/data/adv/source-urls.tsv.

#include <gtest/gtest.h>

#include <map>
#include <stdexcept>

#include "pimAvMngApi/pimAvMngApi.h"
#include "support/LogCapture.h"
#include "support/RecordScript.h"
#include "support/TestData.h"

using namespace pimav::detail;

// Reaches table states that advertisements cannot produce (a session without media).
class AdvSessionsTestAccess {
public:
    static void dropMedia(AdvSessions& table, session_id_t id) {
        table.m_db.m_entries.at(id).m_session.m_media.clear();
    }
};

namespace {

const char* const kUrl = "rtsp://192.168.1.20:554/x";

// The table as the scripts see it: written as the reply of getAdvertisedSessionsJson.
struct AdvTable : IJsonSerializable {
    void Serialize(Json::Value& out) const override { table.getAdvertisedSessionsJson(out); }
    void Deserialize(Json::Value&) override { ADD_FAILURE() << "the table is not read from JSON"; }
    AdvSessions table;
};

// The words of an action: "key=value ... -> key=value ...", as inputs and expectations.
struct ActionWords {
    std::map<std::string, std::string> in, out;
    std::string get(const std::string& key, const std::string& fallback) const {
        const auto it = in.find(key);
        return it == in.end() ? fallback : it->second;
    }
    session_id_t id() const { return std::stoull(get("id", "100")); }
};

ActionWords wordsOf(std::istream& args) {
    ActionWords words;
    bool expected = false;
    for (std::string word; args >> word;) {
        const size_t eq = word.find('=');
        if (word == "->") {
            expected = true;
        } else {
            (expected ? words.out : words.in)[word.substr(0, eq)] =
                eq == std::string::npos ? "" : word.substr(eq + 1);
        }
    }
    return words;
}

// tests/data/adv/aes67.sdp, an AES67 audio session as another device advertises it, with the
// words' id, version and source and the name given.
std::string aes67Sdp(const ActionWords& w, const std::string& name) {
    std::string text = dataText("adv/aes67.sdp");
    const std::pair<std::string, std::string> fields[] = {{"{id}", std::to_string(w.id())},
                                                          {"{version}", w.get("version", "1")},
                                                          {"{source}", w.get("source", "192.168.1.20")},
                                                          {"{name}", name}};
    for (const auto& [key, value] : fields) {
        text.replace(text.find(key), key.size(), value);
    }
    return text;
}

// Adds `text`; checks the result (0 unless given), the id, the `updated` flag and throws.
void add(AdvSessions& table, const ActionWords& w, const std::string& text) {
    session_id_t id = 77;
    bool updated = w.get("flag", "0") == "1";
    const std::string url = w.get("url", kUrl);
    if (w.out.count("throws") != 0) {
        EXPECT_THROW(table.addAdvertisedSession(url, text, id, updated), std::invalid_argument);
        return;
    }
    const int result = table.addAdvertisedSession(url, text, id, updated);
    EXPECT_EQ(result, w.out.count("result") ? std::stoi(w.out.at("result")) : 0);
    EXPECT_EQ(id, result == 0 ? w.id() : 77u);
    if (w.out.count("flag") != 0) {
        EXPECT_EQ(updated, w.out.at("flag") == "1");
    }
}

RecordKind tableKind() {
    using Run = std::function<void(AdvSessions&, const ActionWords&)>;
    const auto action = [](Run run) {
        return recordAction<AdvTable>(
            [run](AdvTable& t, std::istream& args) { run(t.table, wordsOf(args)); });
    };
    const auto removed = [](const ActionWords& w) { return std::stoull(w.out.at("result")); };
    const auto mark = [](bool used) {
        return [used](AdvSessions& t, const ActionWords& w) {
            bool flag = w.get("flag", "0") == "1";
            EXPECT_EQ(t.setSessionAsUsed(w.id(), used, flag), 0);
            if (w.out.count("flag") != 0) {
                EXPECT_EQ(flag, w.out.at("flag") == "1");
            }
        };
    };
    return recordKind<AdvTable>({
        {"add", action([](AdvSessions& t, const ActionWords& w) {
             std::string text = aes67Sdp(w, w.get("name", "Row"));
             if (w.get("clock", "1") == "0") {
                 const size_t line = text.find("a=ts-refclk");
                 text.erase(line, text.find('\n', line) + 1 - line);
             }
             add(t, w, text);
         })},
        {"add-file", action([](AdvSessions& t, const ActionWords& w) {
             add(t, w, dataText(w.get("file", "")));
         })},
        {"use", action(mark(true))},
        {"unuse", action(mark(false))},
        {"remove", action([removed](AdvSessions& t, const ActionWords& w) {
             EXPECT_EQ(t.removeAdvertisedSession(w.id()), removed(w));
         })},
        {"remove-host", action([removed](AdvSessions& t, const ActionWords& w) {
             IpAddress ip;
             EXPECT_TRUE(ip.fromString(w.get("ip", "")));
             EXPECT_EQ(t.removeAdvertisedSession(ip, w.get("name", ""), std::stoi(w.get("port", "0"))),
                       removed(w));
         })},
        {"remove-name", action([removed](AdvSessions& t, const ActionWords& w) {
             EXPECT_EQ(t.removeAdvertisedSessionByName(w.get("name", "")), removed(w));
         })},
        {"pending", action([](AdvSessions& t, const ActionWords& w) {
             EXPECT_EQ(t.getPendingCount(), std::stoul(w.out.at("count")));
         })},
        {"drop-media",
         action([](AdvSessions& t, const ActionWords& w) { AdvSessionsTestAccess::dropMedia(t, w.id()); })},
        {"dump", action([](AdvSessions& t, const ActionWords&) { t.dumpTable(); })},
        {"get", action([](AdvSessions& t, const ActionWords& w) {
             AdvertisementState state(AdvertisementState::STALE);
             std::string sdp, url;
             AdvSessionEntry entry;
             SdpSession session;
             EXPECT_EQ(t.getSessionStatus(w.id(), state), std::stoi(w.out.at("status")));
             EXPECT_EQ(state.toString(), w.out.at("state"));
             const int found = std::stoi(w.out.at("found"));
             EXPECT_EQ(t.getAdvertisedSdp(w.id(), sdp, url), found);
             EXPECT_EQ(t.getAdvertisementSessionEntry(w.id(), entry), found);
             EXPECT_EQ(t.getSdpSession(w.id(), session), found);
             const bool ok = found == 0;
             EXPECT_EQ(sdp, ok ? aes67Sdp(w, w.get("name", "")) : "");
             EXPECT_EQ(url + entry.getSourceUrl(), ok ? std::string(kUrl) + kUrl : "");
             EXPECT_EQ(session.m_info, w.get("name", ""));
             EXPECT_EQ(entry.m_session.m_info, w.get("name", ""));
         })},
    });
}

TEST(Adv, RecordScripts) {
    const RecordKinds kinds = {
        {"AdvertisementState", recordKind<AdvertisementState, int32_t>()},
        {"AdvSessionEntry", recordKind<AdvSessionEntry>()},
        {"AdvSessionsDb", recordKind<AdvSessionsDb>()},
        {"AdvSessions", tableKind()},
    };
    runRecordScripts("records/adv", kinds);
}

TEST(AdvSessionEntry, SourceUrlDerivesHostAndPort) {
    IpAddress local1, local2;
    local1.fromString("10.0.0.1");
    local2.fromString("10.9.9.9");
    SystemDefaultCfg::getInstance()->setLocalIpAddrs({local1, local2});
    for (const DataRow& row : dataRows("adv/source-urls.tsv")) {
        SCOPED_TRACE(row.where);
        const std::vector<std::string>& f = row.fields;
        const std::string badHost = f.size() > 4 ? f[4] : "";
        AdvSessionEntry entry;
        entry.m_host_ip.fromString("10.9.9.9");
        entry.m_host_port = 77;
        LogCapture capture;
        if (f[2] == "throws") {
            entry.setSourceUrl("rtsp://10.1.1.1:5/old");
            try {
                entry.setSourceUrl(f[0]);
                ADD_FAILURE() << "no exception";
            } catch (const std::logic_error& e) {  // invalid_argument, or out_of_range for the long number
                EXPECT_STREQ(e.what(), "stoi");
            }
            EXPECT_EQ(entry.getSourceUrl(), "rtsp://10.1.1.1:5/old");
            EXPECT_EQ(entry.getHostPort(), 5);
        } else {
            EXPECT_EQ(entry.setSourceUrl(f[0]), 0);
            EXPECT_EQ(entry.getSourceUrl(), f[0]);
            EXPECT_EQ(entry.getHostPort(), std::stoi(f[2]));
        }
        EXPECT_EQ(entry.getHostIp().toString(), f[1]);
        EXPECT_EQ(entry.isHostLocal(), f[3] == "1");
        EXPECT_EQ(capture.at(2), badHost == "-" ? std::vector<std::string>{}
                                                : std::vector<std::string>{"Error parsing IP [" + badHost +
                                                                           "]: invalid IP address"});
    }
    SystemDefaultCfg::getInstance()->resetLocalIpAddrs();
}

}  // namespace
