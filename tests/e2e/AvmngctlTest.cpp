// avmngctl as a process: the output of its verbs (its refusals and messages are rows of
// tests/data/tool-messages/cases.txt).

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "EmulatorProcess.h"
#include "support/CommandRows.h"

using namespace pimav::detail;


namespace {

std::string ctl() { return binaryPath("tools/avmngctl"); }

std::vector<std::string> ctlArgs(const EmulatorProcess& emulator, std::vector<std::string> rest) {
    std::vector<std::string> argv = {ctl(), "--port", std::to_string(emulator.port()), "--timeout", "3000"};
    argv.insert(argv.end(), rest.begin(), rest.end());
    return argv;
}

std::string writeFile(const std::string& dir, const std::string& name, const std::string& text) {
    const std::string path = dir + "/" + name;
    std::ofstream(path, std::ios::binary) << text;
    return path;
}

size_t countLines(const std::string& text) { return static_cast<size_t>(std::count(text.begin(), text.end(), '\n')); }

}  // namespace

TEST(Avmngctl, CommandsListsAllIdsWithoutADaemon) {
    // One line per command: the id right-aligned, the method ("-" without one), the text.
    const auto r = run({ctl(), "commands"});
    ASSERT_EQ(r.status, 0) << r.err;
    std::istringstream lines(r.out);
    for (const CommandRowText& row : commandRows()) {
        std::string line;
        ASSERT_TRUE(std::getline(lines, line)) << row.id;
        EXPECT_EQ(line.substr(0, 2), (row.id < 10 ? " " : "") + std::to_string(row.id)) << line;
        std::istringstream words(line.substr(2));
        std::string method;
        words >> method;
        EXPECT_EQ(method, row.hasMethod() ? row.method : "-") << line;
        EXPECT_EQ(line.substr(line.size() - std::min(line.size(), row.description.size() + 2)),
                  "  " + row.description)
            << line;
    }
    EXPECT_EQ(countLines(r.out), commandRows().size());
}

TEST(Avmngctl, TypedVerbsWalkASessionThroughItsLife) {
    EmulatorProcess emulator("", {"--advertise", sourcePath("examples/advertised")});
    const std::string dir = makeTempDir("verbs");
    const std::string source = writeFile(
        dir, "source.json",
        R"({"name":"ctl talker","audio-sources":[{"codec":"L24","ptime":1000,"channel-freq":48000,
            "channel-list":[{"channel":0},{"channel":1}]}]})");
    const auto added = run(ctlArgs(emulator, {"add-source", source}));
    ASSERT_EQ(added.status, 0) << added.err;
    const std::string id = std::to_string(parse(added.out)["session-id"].asUInt64());
    ASSERT_NE(id, "0");

    const auto sdp = run(ctlArgs(emulator, {"sdp", id}));
    ASSERT_EQ(sdp.status, 0) << sdp.err;
    EXPECT_EQ(sdp.out.rfind("v=0", 0), 0u) << sdp.out;
    EXPECT_NE(sdp.out.find("s=ctl talker"), std::string::npos) << sdp.out;

    const auto sessions = run(ctlArgs(emulator, {"sessions"}));
    EXPECT_NE(sessions.out.find("ctl talker"), std::string::npos) << sessions.out;

    // A receiver of advertised Studio A (its origin session id) marks it in use.
    const std::string destination = writeFile(
        dir, "destination.json",
        R"({"name":"ctl listener","rem-sid":{"id":1311738121,"media-idx":0},"channel-list":[{"channel":5}]})");
    const auto listener = run(ctlArgs(emulator, {"add-destination", destination}));
    ASSERT_EQ(listener.status, 0) << listener.err;
    EXPECT_NE(parse(listener.out)["session-id"].asUInt64(), 0u) << listener.out;
    const auto advertised = run(ctlArgs(emulator, {"advertised"}));
    ASSERT_EQ(advertised.status, 0) << advertised.err;
    // NAME is the session name, SOURCE the file it came from.
    EXPECT_NE(advertised.out.find("1311738121            OK      yes    Studio A stereo   sap://192.168.1.50:9875/studio-a"),
              std::string::npos)
        << advertised.out;
    EXPECT_NE(advertised.out.find("no     Control room 8ch  rtsp://192.168.1.51:554/control-room"), std::string::npos)
        << advertised.out;
    EXPECT_NE(advertised.out.find("commentary.sdp  " + sourcePath("examples/advertised/commentary.sdp") + "\n"),
              std::string::npos)
        << advertised.out;

    const auto clock = run(ctlArgs(emulator, {"clock"}));
    EXPECT_NE(clock.out.find("AUTO - PTP BASED"), std::string::npos) << clock.out;
    EXPECT_NE(clock.out.find("PTP SLAVE"), std::string::npos) << clock.out;

    ASSERT_EQ(run(ctlArgs(emulator, {"save", "7", "ctl saved", "--startup"})).status, 0);
    const auto files = run(ctlArgs(emulator, {"files"}));
    EXPECT_NE(files.out.find("ctl saved  (start-up)"), std::string::npos) << files.out;
    EXPECT_NE(files.out.find("start-up position: 7"), std::string::npos) << files.out;

    ASSERT_EQ(run(ctlArgs(emulator, {"remove", id})).status, 0);
    EXPECT_EQ(run(ctlArgs(emulator, {"sdp", id})).status, 1);
    ASSERT_EQ(run(ctlArgs(emulator, {"load", "7"})).status, 0);
    EXPECT_EQ(run(ctlArgs(emulator, {"sdp", id})).status, 0);

    ASSERT_EQ(run(ctlArgs(emulator, {"send", "23", "{\"id\":" + id + ",\"pause\":true}"})).status, 0);
    const auto alarms = run(ctlArgs(emulator, {"alarms"}));
    EXPECT_NE(alarms.out.find("session " + id), std::string::npos) << alarms.out;
}

// --json on every verb: the members of its document (of the first element for a list), as
// README.md lists them; --quiet prints nothing.
TEST(Avmngctl, EveryVerbPrintsItsJsonShape) {
    EmulatorProcess emulator("", {"--advertise", sourcePath("examples/advertised")});
    const std::string sender = sourcePath("examples/documents/sender.json");
    const std::string receiver = sourcePath("examples/documents/receiver-advertised.json");
    ASSERT_EQ(run(ctlArgs(emulator, {"add-destination", receiver})).status, 0);
    ASSERT_EQ(run(ctlArgs(emulator, {"send", "23", "{\"id\":1,\"pause\":true}"})).status, 0);
    const auto quiet = run(ctlArgs(emulator, {"sessions", "-q"}));
    EXPECT_EQ(quiet.status, 0);
    EXPECT_EQ(quiet.out + quiet.err, "");

    const auto shape = [](const Json::Value& doc) {
        const Json::Value& first = doc.isArray() && !doc.empty() ? doc[0] : doc;
        std::string keys;
        for (const std::string& key : first.getMemberNames()) {
            keys += (keys.empty() ? "" : ",") + key;
        }
        return doc.isArray() ? "[" + keys + "]" : "{" + keys + "}";
    };
    const struct {
        std::vector<std::string> args;
        const char* shape;
    } cases[] = {
        {{"commands"}, "[description,enum,id,method]"},
        {{"keygen", makeTempDir("json") + "/k"}, "{public,secret}"},
        {{"send", "51"}, "{receivers,senders}"},
        {{"add-source", sender}, "{audio-sources,name,session-id}"},
        {{"sessions"}, "[id,kind,name,streams]"},
        {{"advertised"}, "[id,in-use,name,source,state,url]"},
        {{"sdp", "2"}, "{id,sdp}"},
        {{"clock"}, "{counters,current,interface,reference,reference-type,system}"},
        {{"alarms"}, "{alarms,sessions}"},
        {{"save", "4", "json"}, "{name,saved,startup}"},
        {{"files"}, "{files,startup}"},
        {{"load", "4"}, "{loaded}"},
        {{"remove", "2"}, "{removed}"},
    };
    for (const auto& c : cases) {
        std::vector<std::string> args = c.args;
        args.insert(args.begin() + 1, "--json");
        const auto r = run(ctlArgs(emulator, args));
        ASSERT_EQ(r.status, 0) << c.args[0] << ": " << r.err;
        EXPECT_EQ(shape(parse(r.out)), c.shape) << r.out;
    }
    EXPECT_EQ(run(ctlArgs(emulator, {"-j", "files"})).out, run(ctlArgs(emulator, {"files", "--json"})).out);
}
