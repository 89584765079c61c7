#pragma once
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>

// A directory of its own for each test, which is the working directory while the test runs.
class InOwnDirectory : public testing::Test {
protected:
    InOwnDirectory() {
        const auto now = std::chrono::system_clock::now().time_since_epoch().count();
        m_own = std::filesystem::temp_directory_path() / ("kzm_files_" + std::to_string(now));
        std::filesystem::create_directory(m_own);
        std::filesystem::current_path(m_own);
    }
    ~InOwnDirectory() override {
        std::filesystem::current_path(std::filesystem::temp_directory_path());
        std::filesystem::remove_all(m_own);
    }

private:
    std::filesystem::path m_own;
};
