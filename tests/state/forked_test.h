/**
 * @file forked_test.h
 * Parts of a test that run in processes of their own.
 */
#ifndef FORKED_TEST_H
#define FORKED_TEST_H

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>

namespace forked
{

/** Runs a function in a process of its own, whose exit status is 1 when an expectation in it fails. */
inline pid_t start(const std::function<void()>& function)
{
    const pid_t child = fork();
    if (child == 0) {
        function();
        _exit(testing::Test::HasFailure() ? 1 : 0);
    }
    return child;
}

/** The status of waitpid for a process that has ended. */
inline int statusOf(pid_t child)
{
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return status;
}

}  // namespace forked

#endif
