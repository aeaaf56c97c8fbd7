/**
 * @file captured_output.h
 * Catches what is written to standard output or standard error, by C stdio and by the descriptor alike.
 */
#ifndef CAPTURED_OUTPUT_H
#define CAPTURED_OUTPUT_H

#include <cstdio>
#include <string>

/** Redirects a descriptor to memory while it lives. One object a descriptor at a time. */
class CapturedDescriptor
{
public:
    CapturedDescriptor(const CapturedDescriptor&) = delete;
    CapturedDescriptor& operator=(const CapturedDescriptor&) = delete;

    /** @return what has been written since the start or the last take(). */
    std::string take();

protected:
    /** @param stream the C stream of the descriptor; flushed before and after. Throws std::system_error. */
    CapturedDescriptor(int descriptor, std::FILE* stream);
    ~CapturedDescriptor();

private:
    int descriptor_;
    std::FILE* stream_;
    int memory_;
    int saved_;
};

/** Captures descriptor 1. */
class CapturedOutput : public CapturedDescriptor
{
public:
    CapturedOutput();
};

/** Captures descriptor 2. */
class CapturedError : public CapturedDescriptor
{
public:
    CapturedError();
};

#endif
