#pragma once
#include <gtest/gtest.h>
#include <host/host_heap.h>

#include <new>

// Repeats `operation` with the 1st, 2nd, ... allocation refused until it asks for no more.
// `prepare` makes a fresh subject, `operation` works on it and lets std::bad_alloc pass or goes
// without, and `check` sees it afterwards (it must be valid). Fails if a block is left once the
// subject is gone.
template <class Prepare, class Operation, class Check>
void ForEveryAllocationFailure(Prepare prepare, Operation operation, Check check) {
    for (long failAt = 1; failAt < 100000; ++failAt) {
        SCOPED_TRACE(failAt);
        bool succeeded = false, refused = false;
        host_heap::Watch();
        {
            auto subject = prepare();
            host_heap::g_probe.untilFailure = failAt;
            try {
                operation(subject);
                succeeded = true;
            } catch (const std::bad_alloc&) {
            }
            refused = host_heap::g_probe.untilFailure.exchange(0) == 0;
            check(subject, succeeded);
        }
        const long left = host_heap::g_probe.live;
        host_heap::Unwatch();
        ASSERT_EQ(left, 0) << "blocks leaked";
        if (succeeded && !refused)
            return testing::Test::RecordProperty("refused", static_cast<int>(failAt) - 1);
    }
    FAIL() << "the operation never succeeded";
}

// A test whose body is repeated like that; what it makes for the process is there from the start.
#define TEST_WITH_REFUSALS(suite, name)                                                            \
    void suite##name();                                                                            \
    TEST(suite, name) {                                                                            \
        suite##name();                                                                             \
        ForEveryAllocationFailure([] { return 0; }, [](int) { suite##name(); }, [](int, bool) {}); \
    }                                                                                              \
    void suite##name()
