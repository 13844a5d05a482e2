#pragma once

#include <cstdlib>
#include <optional>
#include <string>

// Sets an environment variable (or removes it, for nullptr) while in scope, then restores
// what was there. Only for tests that run on one thread.
class ScopedEnv {
public:
    ScopedEnv(const char* name, const char* value) : m_name(name) {
        if (const char* old = std::getenv(name)) {
            m_previous = old;
        }
        set(value);
    }
    ~ScopedEnv() { set(m_previous ? m_previous->c_str() : nullptr); }
    ScopedEnv(const ScopedEnv&) = delete;
    ScopedEnv& operator=(const ScopedEnv&) = delete;

private:
    void set(const char* value) {
        if (value != nullptr) {
            ::setenv(m_name.c_str(), value, 1);
        } else {
            ::unsetenv(m_name.c_str());
        }
    }

    std::string m_name;
    std::optional<std::string> m_previous;
};
