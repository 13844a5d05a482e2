// avmngctl as a process: the output of its verbs (its refusals and messages are rows of
// tests/data/tool-messages/cases.txt).

#include <gtest/gtest.h>

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

// Every verb against one daemon, in this order: the members of its --json document (of the
// first element for a list), as README.md lists them, and a part of its text. --quiet
// prints nothing.
TEST(Avmngctl, EveryVerbPrintsItsJsonShapeAndItsText) {
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
        std::vector<std::string> text;  // parts of the output without --json (none: not run)
    } cases[] = {
        {{"commands"}, "[description,enum,id,method]", {}},
        {{"keygen", makeTempDir("json") + "/k"}, "{public,secret}", {}},
        {{"send", "51"}, "{receivers,senders}", {}},
        {{"add-source", sender}, "{audio-sources,name,session-id}", {}},
        {{"sessions"}, "[id,kind,name,streams]", {"Stage box 1"}},
        // NAME is the session name, SOURCE the file it came from; the receiver uses Studio A.
        {{"advertised"},
         "[id,in-use,name,source,state,url]",
         {"1311738121            OK      yes    Studio A stereo   sap://192.168.1.50:9875/studio-a",
          "no     Control room 8ch  rtsp://192.168.1.51:554/control-room",
          "commentary.sdp  " + sourcePath("examples/advertised/commentary.sdp") + "\n"}},
        {{"sdp", "2"}, "{id,sdp}", {"v=0\no=- 2 1 IN IP4 ", "\ns=Stage box 1\n"}},
        {{"clock"}, "{counters,current,interface,reference,reference-type,system}", {"AUTO - PTP BASED", "PTP SLAVE"}},
        {{"alarms"}, "{alarms,sessions}", {"session 1"}},
        {{"save", "4", "json", "--startup"}, "{name,saved,startup}", {}},
        {{"files"}, "{files,startup}", {"json  (start-up)", "start-up position: 4"}},
        {{"load", "4"}, "{loaded}", {}},
        {{"remove", "2"}, "{removed}", {}},
    };
    for (const auto& c : cases) {
        const auto text = c.text.empty() ? RunResult{0, "", ""} : run(ctlArgs(emulator, c.args));
        EXPECT_EQ(text.status, 0) << c.args[0] << ": " << text.err;
        for (const std::string& part : c.text) {
            EXPECT_NE(text.out.find(part), std::string::npos) << part << " in:\n" << text.out;
        }
        std::vector<std::string> args = c.args;
        args.insert(args.begin() + 1, "--json");
        const auto r = run(ctlArgs(emulator, args));
        ASSERT_EQ(r.status, 0) << c.args[0] << ": " << r.err;
        EXPECT_EQ(shape(parse(r.out)), c.shape) << r.out;
    }
    EXPECT_EQ(run(ctlArgs(emulator, {"-j", "files"})).out, run(ctlArgs(emulator, {"files", "--json"})).out);
}
