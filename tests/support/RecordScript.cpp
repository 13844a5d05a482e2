#include "support/RecordScript.h"

#include <gtest/gtest.h>

#include <cctype>
#include <sstream>
#include <vector>

#include "support/KindedJson.h"
#include "support/LogCapture.h"
#include "support/TestData.h"

using namespace pimav::detail;

namespace {

struct Step {
    std::string where;  // file:line
    std::string op;
    std::string arg;
    std::vector<std::pair<int, std::string>> logs;  // every line the step logs, in order
    std::vector<std::string> messages;              // every user message it leaves
};

// The steps of a case; "log" and "message" lines belong to the step before them.
std::vector<Step> stepsOf(const DataCase& c) {
    std::vector<Step> steps;
    for (size_t i = 0; i < c.lines.size(); ++i) {
        const auto& [op, arg] = c.lines[i];
        if ((op == "log" || op == "message") && steps.empty()) {
            ADD_FAILURE() << c.places[i] << ": '" << op << "' outside a step";
        } else if (op == "log") {
            const size_t gap = arg.find(' ');
            steps.back().logs.emplace_back(std::stoi(arg.substr(0, gap)), unescaped(arg.substr(gap + 1)));
        } else if (op == "message") {
            steps.back().messages.push_back(unescaped(arg));
        } else {
            steps.push_back({c.places[i], op, arg, {}, {}});
        }
    }
    return steps;
}

// The state of a running case.
struct Run {
    const RecordKind* kind = nullptr;
    std::unique_ptr<IJsonSerializable> record;
    Json::Value over;
    int lowest = 1;  // the levels whose lines the steps list
    int highest = 7;
};

void runStep(const Step& step, const RecordKinds& kinds, Run& run) {
    SCOPED_TRACE(step.where);
    auto& [kind, record, over, lowest, highest] = run;
    if (step.op == "over") {
        over = kindedJsonOf(step.arg);
        return;
    }
    if (step.op == "levels") {
        const size_t dash = step.arg.find('-');
        lowest = std::stoi(step.arg.substr(0, dash));
        highest = std::stoi(step.arg.substr(dash + 1));
        return;
    }
    LogCapture capture;
    if (step.op == "new") {
        std::istringstream args(step.arg);
        std::string name;
        args >> name;
        const auto found = kinds.find(name);
        ASSERT_NE(found, kinds.end()) << "no record kind " << name;
        kind = &found->second;
        record = kind->make(args);
        over = Json::Value();
    } else if (record == nullptr) {
        FAIL() << "no record: a case begins with `new`";
    } else if (step.op == "read" || step.op == "read-kept" || step.op == "throws") {
        Json::Value in = kindedJsonOf(step.arg);
        bool threw = false;
        try {
            record->Deserialize(in);
        } catch (const std::exception&) {
            threw = true;
        }
        EXPECT_EQ(threw, step.op == "throws") << step.arg;
        if (step.op == "read-kept") {
            EXPECT_EQ(in, kindedJsonOf(step.arg)) << "the document read was changed";
        }
    } else if (step.op == "write" || step.op == "write-has") {
        Json::Value out = over;
        record->Serialize(out);
        const std::string mismatch = kindedMismatch(kindedJsonOf(step.arg), out, step.op == "write-has");
        EXPECT_TRUE(mismatch.empty()) << mismatch;
    } else if (step.op == "write-lacks") {
        Json::Value out = over;
        record->Serialize(out);
        const Json::Value* at = &out;
        std::istringstream path(step.arg);
        std::string key;
        while (std::getline(path, key, '/') && at != nullptr) {
            const bool index = !key.empty() && std::isdigit(static_cast<unsigned char>(key[0]));
            at = index ? (at->isArray() && std::stoul(key) < at->size() ? &(*at)[std::stoi(key)] : nullptr)
                       : (at->isObject() ? at->find(key.data(), key.data() + key.size()) : nullptr);
        }
        EXPECT_EQ(at, nullptr) << step.arg << " is written: " << kindedText(out);
    } else if (step.op == "do") {
        std::istringstream args(step.arg);
        std::string name;
        args >> name;
        const auto action = kind->actions.find(name);
        ASSERT_NE(action, kind->actions.end()) << "this record kind has no action " << name;
        action->second(*record, args);
    } else {
        FAIL() << "unknown step '" << step.op << "'";
    }
    std::vector<std::pair<int, std::string>> logged;
    for (const LogCapture::Line& line : capture.lines()) {
        if (line.level >= lowest && line.level <= highest) {
            logged.emplace_back(line.level, line.text);
        }
    }
    if (logged != step.logs) {
        std::string lines;
        for (const auto& [level, text] : logged) {
            lines += "\nlog " + std::to_string(level) + " " + escaped(text);
        }
        ADD_FAILURE() << "the step logged other lines:" << lines;
    }
    EXPECT_EQ(ErrorAuxMsg::getInstance()->getMessages(), step.messages);
}

}  // namespace

void runRecordScripts(const std::string& dir, const RecordKinds& kinds) {
    const std::vector<std::string> files = filesIn(kTestData + dir + "/", ".txt");
    ASSERT_FALSE(files.empty()) << "no scripts in tests/data/" << dir;
    for (const std::string& file : files) {
        for (const DataCase& c : dataCases(dir + "/" + file)) {
            SCOPED_TRACE(c.where + " " + c.title);
            Run run;
            for (const Step& step : stepsOf(c)) {
                runStep(step, kinds, run);
            }
        }
    }
}
