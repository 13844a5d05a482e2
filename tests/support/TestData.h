#pragma once

// Reading the data files of tests/data. Header-only: PIMAV_SOURCE_DIR is defined for each
// test binary.

#include <dirent.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <string>
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

// A line of tests/data/sdp-gen/expectations.txt: a session document, the lint profiles the
// generated text passes, and the streams ffprobe reads from it.
struct GenExpectation {
    std::string document;
    std::vector<std::string> profiles;
    std::vector<std::string> streams;
};

inline std::vector<GenExpectation> genExpectations() {
    std::vector<GenExpectation> out;
    std::istringstream in(readText(kTestData + "sdp-gen/expectations.txt"));
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
