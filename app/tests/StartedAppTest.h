// The application's tests run in a fresh folder of their own (the working folder while the
// test runs), on the test's clock, with message boxes recorded in g_boxes; most of them on a
// started application on the null devices.
#pragma once

#include "app/AppServices.h"
#include "app/EditorApp.h"
#include "app/WinInputDevice.h"
#include "app/tests/TestClock.h"

#include "Utils/Utility/GUtDebug.h"
#include "Utils/Utility/GUtTimer.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <unistd.h>
#include <vector>

// "[caption] text" for each message box shown.
inline std::vector<std::string> g_boxes;

// The folder, the clock and the recorded boxes.
class CAppFolderTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        const ::testing::TestInfo* pInfo = ::testing::UnitTest::GetInstance()->current_test_info();
        m_old = std::filesystem::current_path();
        m_dir = std::filesystem::temp_directory_path() / (std::string(pInfo->test_suite_name()) + "_" +
                                                          std::to_string(getpid()) + "_" + pInfo->name());
        std::filesystem::create_directories(m_dir);
        std::filesystem::current_path(m_dir);
        g_boxes.clear();
        GUtSetMessageBoxHandler(&RecordBox);
        GUtSetClock(&m_clock);
    }
    void TearDown() override
    {
        GUtSetClock(nullptr);
        GUtSetMessageBoxHandler(nullptr);
        std::filesystem::current_path(m_old);
        std::filesystem::remove_all(m_dir);
    }

    std::filesystem::path m_old;
    std::filesystem::path m_dir;
    CThreadSafeManualClock m_clock;

private:
    static void RecordBox(const char* pcCaption, const char* pcText)
    {
        g_boxes.push_back(std::string("[") + pcCaption + "] " + pcText);
    }
};

// An application started on the null devices, without a window to read input from; its
// frames take no time, so the clock moves only when the test moves it.
class CStartedAppTest : public CAppFolderTest
{
protected:
    void SetUp() override
    {
        CAppFolderTest::SetUp();
        m_pApp = new Ovrel::CEditorApp();
        m_pApp->SetNullDevices(true);
        m_pApp->SetFactory(&m_factory);
        m_pApp->SetSleepFunction(&NoSleep);
        ASSERT_TRUE(m_pApp->Initialize(0, nullptr));
    }
    void TearDown() override
    {
        delete m_pApp;
        CAppFolderTest::TearDown();
    }

    Ovrel::CEditorApp* m_pApp = nullptr;

private:
    class CQuietFactory final : public Ovrel::CEditorAppFactory
    {
    public:
        Ovrel::CInputDevice* CreateInputDevice() override { return new Ovrel::CWinInputDevice(nullptr); }
    };
    static void NoSleep(int) {}

    CQuietFactory m_factory;
};
