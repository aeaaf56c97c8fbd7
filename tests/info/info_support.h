/**
 * @file info_support.h
 * What the commands of this area meet outside the device-access library: standard input, the time, and threads.
 *
 * In this test program nobody sleeps; sleep() only calls what a test has asked for.
 */
#ifndef INFO_SUPPORT_H
#define INFO_SUPPORT_H

#include <termios.h>

#include <chrono>
#include <ctime>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace info_test
{

inline constexpr std::chrono::seconds kPatience{20};

/** Standard input comes from another descriptor while it lives. One object at a time. */
class StandardInput
{
public:
    StandardInput(const StandardInput&) = delete;
    StandardInput& operator=(const StandardInput&) = delete;

    /** What has not been read yet of an input that has ended, byte by byte. */
    static std::string rest();

protected:
    explicit StandardInput(int descriptor);
    ~StandardInput();

private:
    int saved_;
};

/** A file of these bytes on standard input. */
class InputFile : public StandardInput
{
public:
    explicit InputFile(std::string_view bytes);
};

/** When a terminal that is not raw hands on what is typed. */
enum class Delivery {
    kByLine, /**< as a terminal does at first */
    kByKey   /**< at once, and without signals, so that keys can be typed before somebody makes the terminal raw */
};

/** A terminal on standard input, and its user. */
class Keyboard : public StandardInput
{
public:
    explicit Keyboard(Delivery delivery = Delivery::kByLine);
    ~Keyboard();

    /** Types keys and waits until the terminal has taken them. */
    void type(std::string_view keys);

    /** Takes the terminal away. */
    void hangUp();

    /** What is connected to the program. */
    int descriptor() const { return slave_; }

    bool isRaw() const;
    std::string settings() const;
    const std::string& settingsBefore() const { return settingsBefore_; }

private:
    explicit Keyboard(std::pair<int, int> ends);

    termios current() const;

    int master_;
    int slave_;
    std::string settingsBefore_;
};

/** Calls a function at each sleep() of whole seconds. */
class SleepWatch
{
public:
    explicit SleepWatch(std::function<void(unsigned int seconds)> watch);
    ~SleepWatch();
    SleepWatch(const SleepWatch&) = delete;
    SleepWatch& operator=(const SleepWatch&) = delete;
};

/** Calls a function ahead of each change of the settings of a terminal. */
class SettingsWatch
{
public:
    explicit SettingsWatch(std::function<void(int descriptor, int when, const termios& settings)> watch);
    ~SettingsWatch();
    SettingsWatch(const SettingsWatch&) = delete;
    SettingsWatch& operator=(const SettingsWatch&) = delete;
};

/** The clock stands still at a time, in a time zone. */
class StoppedClock
{
public:
    StoppedClock(std::time_t now, const char* zone);
    ~StoppedClock();
    StoppedClock(const StoppedClock&) = delete;
    StoppedClock& operator=(const StoppedClock&) = delete;
};

/** No thread can be created. */
class ThreadFailure
{
public:
    ThreadFailure();
    ~ThreadFailure();
    ThreadFailure(const ThreadFailure&) = delete;
    ThreadFailure& operator=(const ThreadFailure&) = delete;
};

/** Another collector in the place of the library's. */
class OtherCollector
{
public:
    explicit OtherCollector(void* (*collector)(void* folderName));
    ~OtherCollector();
    OtherCollector(const OtherCollector&) = delete;
    OtherCollector& operator=(const OtherCollector&) = delete;
};

}  // namespace info_test

#endif
