#include "UserDocument.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <sstream>

#include "common/AtomicFile.h"
#include "platform/WordTable.h"

namespace pimav::detail {

namespace {

// One step of a member's path: a key of an object or an index of an array.
struct Step {
    bool isIndex = false;
    std::string key;
    Json::ArrayIndex index = 0;
};
using Path = std::vector<Step>;

std::string pathText(const Path& path) {
    std::string text;
    for (const Step& step : path) {
        if (step.isIndex) {
            text += "[" + std::to_string(step.index) + "]";
        } else {
            text += (text.empty() ? "" : ".") + step.key;
        }
    }
    return text;
}

Path childPath(const Path& path, Step step) {
    Path child = path;
    child.push_back(std::move(step));
    return child;
}

// The member at `path`, or null when the document has none there.
const Json::Value* memberAt(const Json::Value& root, const Path& path) {
    const Json::Value* node = &root;
    for (const Step& step : path) {
        if (step.isIndex ? !node->isArray() || step.index >= node->size()
                         : !node->isObject() || !node->isMember(step.key)) {
            return nullptr;
        }
        node = step.isIndex ? &(*node)[step.index] : &(*node)[step.key];
    }
    return node;
}

Json::Value& existingMember(Json::Value& root, const Path& path) {
    Json::Value* node = &root;
    for (const Step& step : path) {
        node = step.isIndex ? &(*node)[step.index] : &(*node)[step.key];
    }
    return *node;
}

// Takes the member out of the document: an object member is removed (the record then uses
// its default), an array element becomes null (so that the later indexes stay where they are).
void takeOut(Json::Value& root, const Path& path) {
    if (path.empty()) {
        root = Json::Value(Json::objectValue);
        return;
    }
    const Path parentPath(path.begin(), path.end() - 1);
    Json::Value& parent = existingMember(root, parentPath);
    if (path.back().isIndex) {
        parent[path.back().index] = Json::Value();
    } else {
        parent.removeMember(path.back().key);
    }
}

std::vector<Step> childrenOf(const Json::Value& node) {
    std::vector<Step> children;
    if (node.isObject()) {
        for (const std::string& key : node.getMemberNames()) {
            children.push_back({false, key, 0});
        }
    } else if (node.isArray()) {
        for (Json::ArrayIndex i = 0; i < node.size(); ++i) {
            children.push_back({true, "", i});
        }
    }
    return children;
}

// The record's complaint about `doc`; empty when it reads it.
std::string readFailure(const Json::Value& doc, const RecordRoundTrip& roundTrip) {
    try {
        roundTrip(doc);
        return {};
    } catch (const std::exception& e) {
        const std::string what = e.what();
        return what.empty() ? "cannot be read" : what;
    }
}

constexpr WordRow<Json::ValueType> kKindNames[] = {
    {Json::nullValue, "null"},
    {Json::intValue, "a number"},
    {Json::uintValue, "a number"},
    {Json::realValue, "a number"},
    {Json::stringValue, "a string"},
    {Json::booleanValue, "true or false"},
    {Json::arrayValue, "an array"},
    {Json::objectValue, "an object"},
};

const char* kindName(const Json::Value& value) { return wordOf(kKindNames, value.type(), "a value").data(); }

Json::Value withMember(const Json::Value& doc, const Path& path, const Json::Value& value) {
    Json::Value changed = doc;
    existingMember(changed, path) = value;
    return changed;
}

// The kind of value the record writes at `path` when it takes the member there: read off
// its output without the member, or with a list of one empty record, or an empty record,
// in its place. Empty when the record writes nothing there.
std::string expectedKind(const Json::Value& doc, const Path& path, const RecordRoundTrip& roundTrip) {
    Json::Value without = doc;
    takeOut(without, path);
    Json::Value list(Json::arrayValue);
    list.append(Json::Value(Json::objectValue));
    for (const Json::Value& trial :
         {without, withMember(doc, path, list), withMember(doc, path, Json::Value(Json::objectValue))}) {
        try {
            const Json::Value written = roundTrip(trial);
            const Json::Value* member = memberAt(written, path);
            if (member != nullptr && !member->isNull()) {
                return kindName(*member);
            }
        } catch (const std::exception&) {
            // the record does not take this trial: try the next one
        }
    }
    return {};
}

// A member that keeps the document from being read: where it is, the document it was
// found in (the user's, minus the members before it that fail too) and the kind of value
// expected there (empty when unknown).
struct Fault {
    Path path;
    Json::Value doc;
    std::string expected;
};

// `doc` cannot be read, and can be once `path` is taken out: narrows the fault down to a
// member of the wrong kind, or else to the deepest member under `path` whose removal (after
// its earlier siblings) makes `doc` readable. Siblings are taken out one after the other,
// so that two faulty members of one object still lead to one of them.
Fault narrowDown(Json::Value doc, const Path& path, const RecordRoundTrip& roundTrip) {
    const Json::Value* node = memberAt(doc, path);
    const std::string expected = path.empty() ? std::string() : expectedKind(doc, path, roundTrip);
    if (node == nullptr || (!expected.empty() && expected != kindName(*node))) {
        return {path, doc, expected};
    }
    for (const Step& step : childrenOf(*node)) {
        const Path child = childPath(path, step);
        Json::Value trial = doc;
        takeOut(trial, child);
        if (readFailure(trial, roundTrip).empty()) {
            return narrowDown(doc, child, roundTrip);
        }
        doc = std::move(trial);
    }
    return {path, doc, expected};
}

// A member of the user's document that the record does not write back.
enum class Unwritten {
    Read,       // the record reads it (and keeps it to itself)
    WrongKind,  // the record writes this member, but not from a value of this kind
    Ignored,    // the record never looks at it
};

// What the record makes of the member at `path` of `doc`, which it does not write back.
// `expected` is set for WrongKind: the kind the record writes there from a value it takes.
Unwritten classify(const Json::Value& doc, const Path& path, const RecordRoundTrip& roundTrip,
                   std::string& expected) {
    expected = expectedKind(doc, path, roundTrip);
    if (!expected.empty() && expected != kindName(*memberAt(doc, path))) {
        return Unwritten::WrongKind;
    }
    // A value that every reader refuses (an array holding a number is no string, number,
    // flag or record) makes reading fail when the record looks at the member.
    Json::Value poison(Json::arrayValue);
    poison.append(0);
    return readFailure(withMember(doc, path, poison), roundTrip).empty() ? Unwritten::Ignored
                                                                         : Unwritten::Read;
}

// Walks the members of `doc` beside what the record wrote from it; `report` gets each
// member that is not written back and not read, with its class and the expected kind.
void walkUnwritten(const Json::Value& doc, const Json::Value& written, const Path& path,
                   const RecordRoundTrip& roundTrip,
                   const std::function<void(const Path&, Unwritten, const std::string&)>& report) {
    const Json::Value* given = memberAt(doc, path);
    const Json::Value* wrote = memberAt(written, path);
    if (given == nullptr || wrote == nullptr || given->type() != wrote->type()) {
        return;
    }
    for (const Step& step : childrenOf(*given)) {
        const Path child = childPath(path, step);
        if (memberAt(written, child) != nullptr) {
            walkUnwritten(doc, written, child, roundTrip, report);
            continue;
        }
        std::string expected;
        const Unwritten kind = step.isIndex ? Unwritten::Read : classify(doc, child, roundTrip, expected);
        if (kind != Unwritten::Read) {
            report(child, kind, expected);
        }
    }
}

// Walks `doc` if the record reads it; false when it does not.
bool walkDocument(const Json::Value& doc, const RecordRoundTrip& roundTrip,
                  const std::function<void(const Path&, Unwritten, const std::string&)>& report) {
    try {
        const Json::Value written = roundTrip(doc);
        walkUnwritten(doc, written, {}, roundTrip, report);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

}  // namespace

bool readUserFile(const std::string& path, std::string& text, std::string& error) {
    struct stat st {};
    if (::stat(path.c_str(), &st) != 0) {
        error = path + ": cannot read: " + std::strerror(errno);
        return false;
    }
    if (S_ISDIR(st.st_mode)) {
        error = path + ": is a directory, not a file";
        return false;
    }
    if (!readWholeFile(path, text)) {
        error = path + ": cannot read: " + std::strerror(errno != 0 ? errno : EIO);
        return false;
    }
    return true;
}

bool parseJsonText(const std::string& text, Json::Value& doc, std::string& error) {
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    std::string errors;
    if (reader->parse(text.data(), text.data() + text.size(), &doc, &errors)) {
        return true;
    }
    // The reader writes "* Line 1, Column 5\n  message\n" per error: one line each, joined.
    error.clear();
    std::istringstream lines(errors);
    for (std::string line; std::getline(lines, line);) {
        const size_t start = line.find_first_not_of(' ');
        if (start == std::string::npos) {
            continue;
        }
        if (line.compare(start, 7, "* Line ") == 0) {
            std::string where = "line " + line.substr(start + 7);
            const size_t column = where.find(", Column ");
            if (column != std::string::npos) {
                where.replace(column, 9, ", column ");
            }
            error += (error.empty() ? "" : "; ") + where;
        } else {
            error += (error.empty() || error.back() == ' ' ? "" : ": ") + line.substr(start);
        }
    }
    if (error.empty()) {
        error = "not valid JSON";
    }
    return false;
}

bool readJsonObjectFile(const std::string& path, Json::Value& doc, std::string& error) {
    std::string text;
    if (!readUserFile(path, text, error)) {
        return false;
    }
    if (!parseJsonText(text, doc, error)) {
        error = path + ": not valid JSON: " + error;
        return false;
    }
    if (!doc.isObject()) {
        error = path + ": holds " + kindName(doc) + ", not a JSON object";
        return false;
    }
    return true;
}

std::string unreadableMember(const Json::Value& doc, const RecordRoundTrip& roundTrip) {
    const std::string failure = readFailure(doc, roundTrip);
    if (failure.empty()) {
        // Read, but a member of the wrong kind may have been passed over.
        std::string wrongKind;
        walkDocument(doc, roundTrip, [&](const Path& path, Unwritten kind, const std::string& expected) {
            if (kind == Unwritten::WrongKind && wrongKind.empty()) {
                wrongKind = "member \"" + pathText(path) + "\": " + expected + " expected, found " +
                            kindName(*memberAt(doc, path));
            }
        });
        return wrongKind;
    }
    Json::Value empty(Json::objectValue);
    if (!readFailure(empty, roundTrip).empty()) {
        return failure;  // not even an empty document reads: no member is to blame
    }
    const Fault fault = narrowDown(doc, {}, roundTrip);
    const Json::Value* found = memberAt(fault.doc, fault.path);
    if (fault.path.empty() || found == nullptr) {
        return "cannot be read: " + failure;
    }
    const std::string member = "member \"" + pathText(fault.path) + "\": ";
    if (!fault.expected.empty() && fault.expected != kindName(*found)) {
        return member + fault.expected + " expected, found " + kindName(*found);
    }
    Json::StreamWriterBuilder compact;
    compact["indentation"] = "";
    return member + Json::writeString(compact, *found) + " cannot be read (" +
           readFailure(fault.doc, roundTrip) + ")";
}

std::vector<std::string> unknownMembers(const Json::Value& doc, const RecordRoundTrip& roundTrip) {
    std::vector<std::string> unknown;
    walkDocument(doc, roundTrip, [&](const Path& path, Unwritten kind, const std::string&) {
        if (kind == Unwritten::Ignored) {
            unknown.push_back(pathText(path));
        }
    });
    return unknown;
}

bool checkUserDocument(const std::string& source, const Json::Value& doc, const RecordRoundTrip& roundTrip,
                       std::string& error, std::string& warning) {
    warning.clear();
    const std::string unreadable = unreadableMember(doc, roundTrip);
    if (!unreadable.empty()) {
        error = source + ": " + unreadable;
        return false;
    }
    const std::vector<std::string> unknown = unknownMembers(doc, roundTrip);
    for (size_t i = 0; i < unknown.size(); ++i) {
        warning += (i == 0 ? source + ": warning: ignored, not members of this document: " : ", ") + "\"" +
                   unknown[i] + "\"";
    }
    return true;
}

}  // namespace pimav::detail
