#pragma once
#include <alloc/omi_SingletonRegistryHook.h>
#include <cxxabi.h>

#include <cstdlib>
#include <string>
#include <utility>

// Writes down which names come into the registry (+) and are taken out of it (-), in order, as in
// "+Cache -Cache ".
class RegistryRecord {
public:
    RegistryRecord() {
        s_text.clear();
        omi_SetSingletonRegistryObserver(&Note);
    }
    ~RegistryRecord() { omi_SetSingletonRegistryObserver(nullptr); }

    // What was noted since the last call.
    std::string Take() { return std::exchange(s_text, std::string()); }

private:
    static void Note(bool added, const char* name) {
        char* const readable = abi::__cxa_demangle(name, nullptr, nullptr, nullptr);
        s_text += (added ? "+" : "-") + std::string(readable ? readable : name) + " ";
        std::free(readable);
    }
    static inline std::string s_text;
};
