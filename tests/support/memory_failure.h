#pragma once
#include <gtest/gtest.h>
#include <host/host_heap.h>

#include <new>

// Repeats `operation` with the 1st, 2nd, ... allocation refused until it succeeds. `prepare` makes
// a fresh subject, `operation` works on it, `check` sees it after each refusal (it must be valid).
// Fails if any block is left once the subject is gone.
template <class Prepare, class Operation, class Check>
void ForEveryAllocationFailure(Prepare prepare, Operation operation, Check check) {
    for (long failAt = 1; failAt < 100000; ++failAt) {
        SCOPED_TRACE(failAt);
        bool succeeded = false;
        host_heap::Watch();
        {
            auto subject = prepare();
            host_heap::g_probe.untilFailure = failAt;
            try {
                operation(subject);
                succeeded = true;
            } catch (const std::bad_alloc&) {
            }
            host_heap::g_probe.untilFailure = 0;
            check(subject, succeeded);
        }
        const long left = host_heap::g_probe.live;
        host_heap::Unwatch();
        ASSERT_EQ(left, 0) << "blocks leaked";
        if (succeeded) return;
    }
    FAIL() << "the operation never succeeded";
}
