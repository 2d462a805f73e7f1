// Helpers of the diagnostics tests: a temporary folder, file reading, and captures of the
// console, message boxes, console colours and the debug output.
#pragma once

#include "Utils/Utility/GUtDebug.h"
#include "Utils/Utility/GUtTimer.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <sstream>
#include <string>
#include <vector>

namespace DiagTest
{

// A fresh folder under the system's temporary folder, removed with its contents.
class CTempDir
{
public:
    CTempDir()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "edtest_XXXXXX").string();
        m_path = mkdtemp(pattern.data()) ? pattern : std::string();
    }
    ~CTempDir()
    {
        std::error_code error;
        std::filesystem::remove_all(m_path, error);
    }
    CTempDir(const CTempDir&) = delete;
    CTempDir& operator=(const CTempDir&) = delete;

    const std::string& Path() const { return m_path; }
    std::string operator/(const std::string& name) const { return m_path + "/" + name; }
    // The names of the plain files in the folder, sorted.
    std::vector<std::string> Files() const
    {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(m_path))
        {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

private:
    std::string m_path;
};

inline std::string ReadFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

inline bool Exists(const std::string& path)
{
    return std::filesystem::exists(path);
}

// Everything that reached a capture, in order, as "<channel>|<text>" events.
struct CEvents
{
    std::mutex mutex;
    std::vector<std::string> events;
    std::string console;

    void Add(const std::string& event)
    {
        std::lock_guard<std::mutex> lock(mutex);
        events.push_back(event);
    }
};

inline CEvents& Events()
{
    static CEvents s_events;
    return s_events;
}

// Installs the captures for its lifetime: console print, attributes, message boxes, the
// active-window poster and the debug output.
class CCapture
{
public:
    CCapture()
    {
        Clear();
        GUtOut::SetPrintFunction(&Print);
        GUtOut::SetAttributeFunction(&Attribute);
        GUtSetMessageBoxHandler(&Box);
        GUtSetActiveWindowPoster(&Post);
        GUtSetDebugOutputFunction(&Debug);
    }
    ~CCapture()
    {
        GUtOut::SetPrintFunction(nullptr);
        GUtOut::SetAttributeFunction(nullptr);
        GUtSetMessageBoxHandler(nullptr);
        GUtSetActiveWindowPoster(nullptr);
        GUtSetDebugOutputFunction(nullptr);
    }
    CCapture(const CCapture&) = delete;
    CCapture& operator=(const CCapture&) = delete;

    static void Clear()
    {
        std::lock_guard<std::mutex> lock(Events().mutex);
        Events().events.clear();
        Events().console.clear();
    }
    static std::vector<std::string> Take()
    {
        std::lock_guard<std::mutex> lock(Events().mutex);
        std::vector<std::string> events;
        events.swap(Events().events);
        Events().console.clear();
        return events;
    }
    static std::string Console()
    {
        std::lock_guard<std::mutex> lock(Events().mutex);
        return Events().console;
    }

private:
    static void Print(const char* pcText)
    {
        Events().Add(std::string("print|") + pcText);
        std::lock_guard<std::mutex> lock(Events().mutex);
        Events().console += pcText;
    }
    static void Attribute(int iAttribute) { Events().Add("colour|" + std::to_string(iAttribute)); }
    static void Box(const char* pcCaption, const char* pcText)
    {
        Events().Add(std::string("box|") + pcCaption + "|" + pcText);
    }
    static void Post(uint32_t uMessage, uint64_t uW, int64_t iL)
    {
        Events().Add("post|" + std::to_string(uMessage) + "|" + std::to_string(uW) + "|" +
                     std::to_string(iL));
    }
    static void Debug(const char* pcText) { Events().Add(std::string("debug|") + pcText); }
};

// Replaces the process clock for its lifetime.
class CClockScope
{
public:
    CClockScope()
    {
        GUtLocalTime time;
        time.iYear = 2024;
        time.iMonth = 3;
        time.iDay = 5;
        time.iHour = 7;
        time.iMinute = 8;
        time.iSecond = 9;
        m_clock.SetLocalTime(time);
        m_clock.SetMilliseconds(1000.0);
        GUtSetClock(&m_clock);
    }
    ~CClockScope() { GUtSetClock(nullptr); }
    CClockScope(const CClockScope&) = delete;
    CClockScope& operator=(const CClockScope&) = delete;

    GUtManualClock& Clock() { return m_clock; }

private:
    GUtManualClock m_clock;
};

} // namespace DiagTest
