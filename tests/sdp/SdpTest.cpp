// The SDP converter: parsing (tests/data/sdp-parse/cases.txt and the corpus), generation
// (tests/data/sdp-parse/generate.txt), the records in JSON (tests/data/records/sdp), and
// below them what no text shows.

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "pimAvMngApi/pimAvMngApi.h"
#include "support/JsonText.h"
#include "support/KindedJson.h"
#include "support/LogCapture.h"
#include "support/RecordScript.h"
#include "support/TestData.h"

using namespace pimav::detail;

namespace {

using Lines = std::vector<std::string>;

// The board of a case ("MODEL MODULE"), the previous board restored on scope exit.
class BoardScope {
public:
    explicit BoardScope(const std::string& words)
        : m_saved(SystemDefaultCfg::getInstance()->getBoardModel()) {
        std::istringstream in(words);
        std::string model, module;
        in >> model >> module;
        BoardModelType type = MAPLE;
        boardModelTypeFromString(model, type);
        SystemDefaultCfg::getInstance()->setBoardModel(BoardModel(type, BitstreamType::fromString(module)));
    }
    ~BoardScope() { SystemDefaultCfg::getInstance()->setBoardModel(m_saved); }
    BoardScope(const BoardScope&) = delete;
    BoardScope& operator=(const BoardScope&) = delete;

private:
    BoardModel m_saved;
};

// A session's JSON form with, in each media, the members that form leaves out: the packing
// mode and sender type, and with `parsed` also the group type and the channel order.
Json::Value sessionView(const SdpSession& session, bool parsed) {
    Json::Value view;
    session.Serialize(view);
    for (Json::ArrayIndex i = 0; i < session.m_media.size(); ++i) {
        const SdpMedia& media = session.m_media[i];
        view["media"][i]["packing-mode"] = media.m_packing_mode;
        view["media"][i]["sender-type"] = media.m_sender_type;
        if (parsed) {
            view["media"][i]["group-type"] = static_cast<int>(media.m_group_type);
            Json::Value& order = view["media"][i]["channel-order"] = Json::Value(Json::arrayValue);
            for (const std::string& item : media.m_channel_order) {
                order.append(item);
            }
        }
    }
    return view;
}

TEST(SdpParse, Cases) {
    const std::vector<DataCase> cases = dataCases("sdp-parse/cases.txt");
    ASSERT_FALSE(cases.empty());
    for (const DataCase& c : cases) {
        SCOPED_TRACE(c.where + " " + c.title);
        BoardScope board(c.get("board", "MAPLE SDI-ST2110"));
        const std::string text = c.get("text");
        const Lines messages = c.all("message");
        SdpConverter converter;
        LogCapture log;
        EXPECT_EQ(converter.parseSdp(text), std::stoi(c.get("code")));
        EXPECT_EQ(ErrorAuxMsg::getInstance()->getMessages(), messages);
        const Lines level2 = log.at(2);
        for (const std::string& message : messages) {  // each user message is logged too
            EXPECT_NE(std::find(level2.begin(), level2.end(), message), level2.end()) << message;
        }
        for (const std::string& text : c.all("logged")) {
            EXPECT_TRUE(log.contains(text)) << "no log line contains: " << text;
        }
        if (c.get("code") == "0") {
            SdpSession session;
            converter.getSdpConfig(session);
            if (c.has("session")) {
                const std::string mismatch =
                    kindedMismatch(kindedJsonOf(c.get("session")), sessionView(session, true), true);
                EXPECT_TRUE(mismatch.empty()) << mismatch;
            }
            std::string stored;
            converter.getSdpString(&stored);
            EXPECT_EQ(stored, text);
        }
    }
}

TEST(SdpParse, CorpusFilesHaveTheirOutcome) {
    const std::vector<std::string> files = corpusFiles();
    const std::vector<DataRow> rows = dataRows("sdp-parse/corpus.tsv");
    ASSERT_FALSE(files.empty()) << "SDP corpus missing or empty: " << kCorpusDir;
    ASSERT_EQ(files.size(), rows.size()) << "a corpus file without its row, or a row without its file";
    BoardScope board("MAPLE SDI-ST2110");
    for (size_t i = 0; i < rows.size(); ++i) {
        const std::vector<std::string>& f = rows[i].fields;
        SCOPED_TRACE(rows[i].where);
        ASSERT_EQ(files[i], f[0]) << "the rows follow the files' order";
        SdpConverter converter;
        LogCapture log;
        EXPECT_EQ(converter.parseSdp(readText(kCorpusDir + f[0])), std::stoi(f[1]));
        EXPECT_EQ(ErrorAuxMsg::getInstance()->getMessages(), Lines(f.begin() + 5, f.end()));
        EXPECT_TRUE(f[4] == "-" || log.contains(f[4])) << "no log line contains: " << f[4];
        EXPECT_FALSE(log.contains("SDP PARSE threw exception"));
        if (f[1] != "0") {
            continue;
        }
        SdpSession session;
        converter.getSdpConfig(session);
        ASSERT_EQ(session.m_media.size(), std::stoul(f[2]));
        EXPECT_EQ(session.m_media[0].m_video.toString(), f[3] == "-" ? "undefined" : f[3]);
        // What was accepted can be written again and read back.
        SdpConverter again;
        ASSERT_EQ(again.setSdpConfig(session), 0);
        std::string text;
        again.getSdpString(&text);
        EXPECT_EQ(again.parseSdp(text), 0) << text;
    }
}

// A session of a generation case: its JSON form and the members that form leaves out.
SdpSession sessionOf(Json::Value doc) {
    SdpSession session;
    session.Deserialize(doc);
    for (Json::ArrayIndex i = 0; i < session.m_media.size(); ++i) {
        session.m_media[i].m_packing_mode = doc["media"][i].get("packing-mode", "").asString();
        session.m_media[i].m_sender_type = doc["media"][i].get("sender-type", "").asString();
    }
    return session;
}

TEST(SdpGenerate, Cases) {
    const std::vector<DataCase> cases = dataCases("sdp-parse/generate.txt");
    ASSERT_FALSE(cases.empty());
    for (const DataCase& c : cases) {
        SCOPED_TRACE(c.where + " " + c.title);
        BoardScope board(c.get("board"));
        SdpSession session = sessionOf(jsonOf(c.get("session")));
        SdpConverter converter;
        LogCapture log;
        EXPECT_EQ(converter.setSdpConfig(session), std::stoi(c.get("code", "0")));
        std::string text = "old";
        EXPECT_EQ(converter.getSdpString(&text), 0);
        for (const std::string& part : c.all("has")) {
            EXPECT_NE(text.find(unescaped(part)), std::string::npos) << part << "\nin\n" << text;
        }
        for (const std::string& part : c.all("lacks")) {
            EXPECT_EQ(text.find(unescaped(part)), std::string::npos) << part << "\nin\n" << text;
        }
        if (c.has("ends")) {
            const std::string end = unescaped(c.get("ends"));
            EXPECT_TRUE(text.size() >= end.size() &&
                        text.compare(text.size() - end.size(), end.size(), end) == 0)
                << text;
        }
        if (c.has("text")) {
            EXPECT_EQ(text, c.get("text"));
        }
        if (c.has("dante")) {
            const bool fails = !c.has("dante-mode");
            std::string dante = "old";
            EXPECT_EQ(converter.generateDanteSdp(dante) < 0, fails);
            EXPECT_EQ(dante, fails ? "" : c.get("dante"));
            std::string after;
            converter.getSdpString(&after);
            EXPECT_EQ(after, text) << "the Dante text does not replace the stored text";
        }
        for (const std::string& text : c.all("logged")) {
            EXPECT_TRUE(log.contains(text)) << "no log line contains: " << text;
        }
        if (c.has("round-trip")) {
            SdpConverter parser;
            log.clear();
            ASSERT_EQ(parser.parseSdp(text), 0) << text;
            SdpSession back;
            parser.getSdpConfig(back);
            EXPECT_EQ(jsonText(sessionView(back, false)), jsonText(sessionView(session, false))) << text;
            EXPECT_EQ(log.at(2), Lines{}) << text;
        }
    }
}

TEST(SdpRecords, Scripts) {
    const RecordKinds kinds = {
        {"SdpSession", recordKind<SdpSession>({{"dump", recordAction<SdpSession>(&SdpSession::dump)}})},
        {"SdpMedia", recordKind<SdpMedia>()},
        {"SdpMediaRtpMap", recordKind<SdpMediaRtpMap>()},
    };
    runRecordScripts("records/sdp", kinds);
}

TEST(SdpParse, FailedParseKeepsPreviousResult) {
    const std::string text = readText(kCorpusDir + "st2110-30-l24-48k-8ch-1ms-ttl128-framecount.sdp");
    SdpConverter converter;
    LogCapture log;
    ASSERT_EQ(converter.parseSdp(text), 0);
    SdpSession first;
    converter.getSdpConfig(first);
    EXPECT_EQ(converter.parseSdp("v=0\n"), -1);
    std::string broken = text;
    broken.replace(broken.find("a=ptime:1"), 9, "a=ptime:x");
    EXPECT_EQ(converter.parseSdp(broken), -7);
    SdpSession s;
    converter.getSdpConfig(s);
    EXPECT_EQ(jsonText(sessionView(s, true)), jsonText(sessionView(first, true)));
    std::string stored;
    converter.getSdpString(&stored);
    EXPECT_EQ(stored, text);
}

TEST(SdpParse, LenientConversions) {
    for (const DataRow& row : dataRows("sdp-parse/numbers.tsv")) {
        const std::vector<std::string>& f = row.fields;
        SCOPED_TRACE(row.where);
        const std::string text = f[1] == "-" ? "" : f[1];
        LogCapture log;
        EXPECT_EQ(
            f[0] == "unsigned" ? SdpConverter::parseUnsigned(text) : SdpConverter::parseUnsigned64(text),
            std::stoull(f[2]));
        EXPECT_EQ(log.at(2), f[3] == "-" ? Lines{} : Lines{f[3]});
    }
}

TEST(SdpConverter, NullPointersGiveMinusFour) {
    SdpConverter converter;
    LogCapture log;
    Lines lines;
    std::string item;
    SdpMedia media;
    EXPECT_EQ(converter.parseSdpSession(nullptr, &lines, &lines), -4);
    EXPECT_EQ(converter.parseSdpMedia(&media, nullptr, &lines, SdpGroup::GROUP_NONE, item), -4);
    EXPECT_EQ(converter.checkMinimumCfg(nullptr), -4);
    EXPECT_EQ(converter.getSdpString(nullptr), -4);
    EXPECT_EQ(converter.generateSdp(nullptr), -4);
    EXPECT_EQ(log.at(2), (Lines{"parseSdpSession:: Parameter is null.", "parseSdpMedia:: Parameter is null.",
                                "checkMinimumCfg:: Parameter is null.", "getSdpString:: Parameter is null.",
                                "generateSdp:: Parameter is null."}));
    EXPECT_TRUE(log.contains("SDP:: generating SDP from media session internal configuration"));
}

TEST(SdpConverter, ParsesOneMediaSection) {
    SdpConverter converter;
    LogCapture log;
    Lines lines = {"m=audio 5004 RTP/AVP 96", "c=IN IP4 239.69.1.1/32", "a=rtpmap:96 L24/48000/8",
                   "a=recvonly"};
    Lines leftovers;
    std::string item;
    SdpMedia media;
    EXPECT_EQ(converter.parseSdpMedia(&media, &lines, &leftovers, SdpGroup::GROUP_NONE, item), 0);
    EXPECT_EQ(media.m_udp_port, 5004u);  // the section's fields: tests/data/sdp-parse/cases.txt
    EXPECT_EQ(leftovers, Lines{"a=recvonly"});
}

TEST(SdpConverter, GroupItemsKeepEmptyOnesAndManualTextEndsAtNul) {
    SdpConverter converter;
    LogCapture log;
    Lines lines = {"a=group:DUP a  b\r"};
    SdpGroup group;
    EXPECT_EQ(converter.parseGroups(lines, group), 0);
    EXPECT_EQ(group.m_type, SdpGroup::GROUP_DUP);
    EXPECT_EQ(group.m_items, (Lines{"a", "", "b"}));
    EXPECT_TRUE(log.contains("SDP:: parsed last group item b"));

    std::string manual("v=0\ns=hand\n\0tail", 16);
    EXPECT_EQ(converter.generateManualSessionSdp(manual), 0);
    std::string text;
    converter.getSdpString(&text);
    EXPECT_EQ(text, "v=0\ns=hand\n");
}

}  // namespace
