#pragma once
#include <gtest/gtest.h>

#include <csignal>

// The statement ends the process through abort(): a signal on Linux, exit code 3 on Windows.
#ifdef _WIN32
#define EXPECT_ABORT(statement) EXPECT_EXIT(statement, testing::ExitedWithCode(3), "")
#else
#define EXPECT_ABORT(statement) EXPECT_EXIT(statement, testing::KilledBySignal(SIGABRT), "")
#endif
