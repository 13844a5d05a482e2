#pragma once

// Reading the data files of tests/data. Header-only: PIMAV_SOURCE_DIR is defined for each
// test binary.

#include <dirent.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace pimav::detail {

// tests/data/ of the source tree, and its SDP corpus, each with a trailing '/'.
inline const std::string kTestData = std::string(PIMAV_SOURCE_DIR) + "/tests/data/";
inline const std::string kCorpusDir = kTestData + "sdp-corpus/";

// The bytes of a file as they are; empty when it cannot be read.
inline std::string readText(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// The text of tests/data/<path>; throws when it is missing or empty, so that a runner
// never passes on a data file it could not read.
inline std::string dataText(const std::string& path) {
    std::string text = readText(kTestData + path);
    if (text.empty()) {
        throw std::runtime_error("cannot read tests/data/" + path);
    }
    return text;
}

// Names of the files in `dir` that end in `suffix`, sorted.
inline std::vector<std::string> filesIn(const std::string& dir, const std::string& suffix) {
    std::vector<std::string> files;
    if (DIR* d = opendir(dir.c_str())) {
        while (const dirent* entry = readdir(d)) {
            const std::string name = entry->d_name;
            if (name.size() > suffix.size() &&
                name.compare(name.size() - suffix.size(), suffix.size(), suffix) == 0) {
                files.push_back(name);
            }
        }
        closedir(d);
    }
    std::sort(files.begin(), files.end());
    return files;
}

inline std::vector<std::string> corpusFiles() {
    return filesIn(kCorpusDir, ".sdp");
}

// White-space separated words.
inline std::vector<std::string> words(const std::string& text) {
    std::istringstream in(text);
    std::vector<std::string> out;
    for (std::string word; in >> word;) {
        out.push_back(word);
    }
    return out;
}

// Text of a data file with \n, \r, \t and \\ escapes resolved.
inline std::string unescaped(const std::string& text) {
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\' || i + 1 == text.size()) {
            out += text[i];
            continue;
        }
        const char c = text[++i];
        out += c == 'n' ? '\n' : c == 'r' ? '\r' : c == 't' ? '\t' : c;
    }
    return out;
}

// The reverse of unescaped().
inline std::string escaped(const std::string& text) {
    std::string out;
    for (char c : text) {
        out += c == '\n'   ? "\\n"
               : c == '\r' ? "\\r"
               : c == '\t' ? "\\t"
               : c == '\\' ? "\\\\"
                           : std::string(1, c);
    }
    return out;
}

// A row of a tab-separated table under tests/data/: its place, for messages, and its fields.
struct DataRow {
    std::string where;
    std::vector<std::string> fields;
};

// The rows of tests/data/<path>; empty lines and lines that begin with '#' are skipped.
inline std::vector<DataRow> dataRows(const std::string& path) {
    std::vector<DataRow> rows;
    std::istringstream in(dataText(path));
    int number = 0;
    for (std::string line; std::getline(in, line);) {
        ++number;
        if (line.empty() || line[0] == '#') {
            continue;
        }
        DataRow row{path + ":" + std::to_string(number), {}};
        std::istringstream fields(line);
        for (std::string field; std::getline(fields, field, '\t');) {
            row.fields.push_back(field);
        }
        rows.push_back(row);
    }
    return rows;
}

// A case of a case file under tests/data/: "=== title", then "key value" lines, in order,
// the values as written (a line that begins with a blank continues the one before; '#' lines
// are comments). "text" and "dante" open a block of lines, escapes resolved, up to a line
// ".", kept under their key with the rest of their line under "<key>-mode".
struct DataCase {
    std::string where;
    std::string title;
    std::vector<std::pair<std::string, std::string>> lines;
    std::vector<std::string> places;  // file:line of each of `lines`

    bool has(const std::string& key) const {
        return std::any_of(lines.begin(), lines.end(), [&](const auto& line) { return line.first == key; });
    }
    std::string get(const std::string& key, const std::string& fallback = "") const {
        for (const auto& [k, value] : lines) {
            if (k == key) {
                return value;
            }
        }
        return fallback;
    }
    std::vector<std::string> all(const std::string& key) const {
        std::vector<std::string> out;
        for (const auto& [k, value] : lines) {
            if (k == key) {
                out.push_back(value);
            }
        }
        return out;
    }
};

inline std::vector<DataCase> dataCases(const std::string& path) {
    std::vector<DataCase> cases;
    std::istringstream in(dataText(path));
    std::string* block = nullptr;
    int number = 0;
    for (std::string line; std::getline(in, line);) {
        ++number;
        if (block != nullptr) {
            if (line == ".") {
                block = nullptr;
            } else {
                *block += unescaped(line) + "\n";
            }
        } else if (line.rfind("=== ", 0) == 0) {
            cases.push_back({path + ":" + std::to_string(number), line.substr(4), {}, {}});
        } else if (line[0] == ' ' && !cases.empty() && !cases.back().lines.empty()) {
            cases.back().lines.back().second += line;  // continues the line before
        } else if (!line.empty() && line[0] != '#' && !cases.empty()) {
            const size_t space = line.find(' ');
            const std::string key = line.substr(0, space);
            const std::string rest = space == std::string::npos ? "" : line.substr(space + 1);
            DataCase& c = cases.back();
            const bool opensBlock = (key == "text" || key == "dante") && rest != "fails";
            c.lines.emplace_back(opensBlock ? key + "-mode" : key, rest);
            c.places.push_back(path + ":" + std::to_string(number));
            if (opensBlock) {
                c.lines.emplace_back(key, "");
                c.places.push_back(c.places.back());
                block = &c.lines.back().second;
            }
        }
    }
    return cases;
}

// A line of tests/data/sdp-gen/expectations.txt: a session document, the lint profiles the
// generated text passes, and the streams ffprobe reads from it.
struct GenExpectation {
    std::string document;
    std::vector<std::string> profiles;
    std::vector<std::string> streams;
};

inline std::vector<GenExpectation> genExpectations() {
    std::vector<GenExpectation> out;
    std::istringstream in(dataText("sdp-gen/expectations.txt"));
    for (std::string line; std::getline(in, line);) {
        std::vector<std::string> fields = words(line);
        if (fields.size() < 3 || fields[0][0] == '#') {
            continue;
        }
        std::replace(fields[1].begin(), fields[1].end(), ',', ' ');
        out.push_back({fields[0], words(fields[1]), {fields.begin() + 2, fields.end()}});
    }
    return out;
}

}  // namespace pimav::detail
