#include "app/Linux/QtWindow.h"
#include "app/Linux/QtKeyTable.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QUrl>
#include <QWheelEvent>

#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

using namespace Ovrel;
namespace RD = Kestrin::RenderDevice;
namespace WM = Kestrin::RenderDevice::WindowMessage;

namespace
{
struct SMessage
{
    uint32_t uMessage;
    uint64_t wParam;
    int64_t lParam;
};

struct SSeen
{
    std::vector<SMessage> messages;
    std::vector<std::string> dropped;
    bool bKeepOnClose = false;

    std::vector<uint32_t> Numbers(bool bSkipCursor = true) const
    {
        std::vector<uint32_t> numbers;
        for (const SMessage& message : messages)
        {
            if (!bSkipCursor || (message.uMessage != WM::SETCURSOR && message.uMessage != WM::MOUSEMOVE &&
                                 message.uMessage != WM::MOVE && message.uMessage != WM::SIZE &&
                                 message.uMessage != WM::ACTIVATE && message.uMessage != WM::ACTIVATEAPP))
            {
                numbers.push_back(message.uMessage);
            }
        }
        return numbers;
    }
    const SMessage* Find(uint32_t uMessage) const
    {
        for (const SMessage& message : messages)
        {
            if (message.uMessage == uMessage)
            {
                return &message;
            }
        }
        return nullptr;
    }
};

int64_t Record(void* pUser, uint32_t uMessage, uint64_t wParam, int64_t lParam, bool& bHandled)
{
    SSeen* pSeen = static_cast<SSeen*>(pUser);
    pSeen->messages.push_back({uMessage, wParam, lParam});
    if (uMessage == WM::DROPFILES)
    {
        pSeen->dropped = reinterpret_cast<const RD::SDropFiles*>(wParam)->files;
    }
    if (uMessage == WM::CLOSE && pSeen->bKeepOnClose)
    {
        bHandled = true;
    }
    return 0;
}

class QtWindowTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
        static int s_iArgc = 1;
        static char s_acName[] = "test_app";
        static char* s_apArgv[] = {s_acName, nullptr};
        s_pApplication = new QApplication(s_iArgc, s_apArgv);
    }
    static void TearDownTestSuite()
    {
        delete s_pApplication;
        s_pApplication = nullptr;
    }
    void SetUp() override
    {
        m_pWindow = new CQtMainWindow(320, 200);
        m_pWindow->SetMessageProc(&Record, &m_seen);
        m_seen.messages.clear();
    }
    void TearDown() override { delete m_pWindow; }

    void Send(QEvent& event) { QApplication::sendEvent(m_pWindow->GetWidget(), &event); }
    // Qt delivers drops only inside a drag: give the event to the widget itself.
    void Deliver(QEvent& event) { static_cast<QObject*>(m_pWindow->GetWidget())->event(&event); }

    static QApplication* s_pApplication;
    CQtMainWindow* m_pWindow = nullptr;
    SSeen m_seen;
};
QApplication* QtWindowTest::s_pApplication = nullptr;
} // namespace

TEST(QtKeyTable, KeysBecomeVirtualKeyCodes)
{
    EXPECT_EQ(QtKeyToVirtualKey(Qt::Key_W), 'W');
    EXPECT_EQ(QtKeyToVirtualKey(Qt::Key_7), '7');
    EXPECT_EQ(QtKeyToVirtualKey(Qt::Key_PageUp), 33);
    EXPECT_EQ(QtKeyToVirtualKey(Qt::Key_PageDown), 34);
    EXPECT_EQ(QtKeyToVirtualKey(Qt::Key_End), 35);
    EXPECT_EQ(QtKeyToVirtualKey(Qt::Key_Home), 36);
    EXPECT_EQ(QtKeyToVirtualKey(Qt::Key_Left), 37);
    EXPECT_EQ(QtKeyToVirtualKey(Qt::Key_Up), 38);
    EXPECT_EQ(QtKeyToVirtualKey(Qt::Key_Right), 39);
    EXPECT_EQ(QtKeyToVirtualKey(Qt::Key_Down), 40);
    EXPECT_EQ(QtKeyToVirtualKey(Qt::Key_Delete), 46);
    EXPECT_EQ(QtKeyToVirtualKey(Qt::Key_Shift), 16);
    EXPECT_EQ(QtKeyToVirtualKey(Qt::Key_Control), 17);
    EXPECT_EQ(QtKeyToVirtualKey(Qt::Key_Alt), 18);
    EXPECT_EQ(QtKeyToVirtualKey(Qt::Key_F1), 0x70);
    EXPECT_EQ(QtKeyToVirtualKey(Qt::Key_F12), 0x7B);
    EXPECT_EQ(QtKeyToVirtualKey(Qt::Key_Backslash), 0xDC);
    EXPECT_EQ(QtKeyToVirtualKey(Qt::Key_unknown), 0);
}

TEST_F(QtWindowTest, KeysGiveKeyDownCharAndKeyUpAndKeepTheKeyboardState)
{
    QKeyEvent press(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier, "a");
    Send(press);
    uint8_t aKeys[256];
    m_pWindow->GetKeyboardState(aKeys);
    EXPECT_EQ(aKeys['A'], 0x80);
    QKeyEvent release(QEvent::KeyRelease, Qt::Key_A, Qt::NoModifier, "a");
    Send(release);
    m_pWindow->GetKeyboardState(aKeys);
    EXPECT_EQ(aKeys['A'], 0);
    QKeyEvent copy(QEvent::KeyPress, Qt::Key_C, Qt::ControlModifier, QString(QChar(3)));
    Send(copy);
    m_pWindow->GetKeyboardState(aKeys);
    EXPECT_EQ(aKeys[17], 0x80);
    QKeyEvent pageUp(QEvent::KeyPress, Qt::Key_PageUp, Qt::NoModifier);
    Send(pageUp);
    ASSERT_EQ(m_seen.messages.size(), 6u);
    EXPECT_EQ(m_seen.messages[0].uMessage, WM::KEYDOWN);
    EXPECT_EQ(m_seen.messages[0].wParam, uint64_t('A'));
    EXPECT_EQ(m_seen.messages[1].uMessage, WM::CHAR);
    EXPECT_EQ(m_seen.messages[1].wParam, uint64_t('a'));
    EXPECT_EQ(m_seen.messages[2].uMessage, WM::KEYUP);
    EXPECT_EQ(m_seen.messages[3].wParam, uint64_t('C'));
    EXPECT_EQ(m_seen.messages[4].uMessage, WM::CHAR);
    EXPECT_EQ(m_seen.messages[4].wParam, 3u); // control-C reaches the console as code 3
    EXPECT_EQ(m_seen.messages[5].uMessage, WM::KEYDOWN);
    EXPECT_EQ(m_seen.messages[5].wParam, 33u);
}

TEST_F(QtWindowTest, MouseButtonsWheelAndMovementBecomeTheirMessagesAndTheRelativeMouse)
{
    const QPointF at(10, 20);
    QMouseEvent down(QEvent::MouseButtonPress, at, m_pWindow->GetWidget()->mapToGlobal(at), Qt::LeftButton,
                     Qt::LeftButton, Qt::NoModifier);
    Send(down);
    QMouseEvent move(QEvent::MouseMove, QPointF(15, 18), m_pWindow->GetWidget()->mapToGlobal(QPointF(15, 18)),
                     Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    Send(move);
    QMouseEvent move2(QEvent::MouseMove, QPointF(25, 8), m_pWindow->GetWidget()->mapToGlobal(QPointF(25, 8)),
                      Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    Send(move2);
    QMouseEvent up(QEvent::MouseButtonRelease, at, m_pWindow->GetWidget()->mapToGlobal(at), Qt::LeftButton,
                   Qt::NoButton, Qt::NoModifier);
    Send(up);
    QMouseEvent right(QEvent::MouseButtonPress, at, m_pWindow->GetWidget()->mapToGlobal(at), Qt::RightButton,
                      Qt::RightButton, Qt::NoModifier);
    Send(right);
    QMouseEvent twice(QEvent::MouseButtonDblClick, at, m_pWindow->GetWidget()->mapToGlobal(at),
                      Qt::LeftButton, Qt::LeftButton | Qt::RightButton, Qt::NoModifier);
    Send(twice);
    QWheelEvent wheel(at, m_pWindow->GetWidget()->mapToGlobal(at), QPoint(), QPoint(0, -240), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    Send(wheel);
    EXPECT_EQ(m_seen.Numbers(), (std::vector<uint32_t>{WM::LBUTTONDOWN, WM::LBUTTONUP, WM::RBUTTONDOWN,
                                                       WM::LBUTTONDBLCLK, WM::MOUSEWHEEL}));
    const SMessage* pDown = m_seen.Find(WM::LBUTTONDOWN);
    EXPECT_EQ(RD::LowWord(pDown->lParam), 10);
    EXPECT_EQ(RD::HighWord(pDown->lParam), 20);
    EXPECT_EQ(pDown->wParam & RD::MK_LBUTTON, RD::MK_LBUTTON);
    EXPECT_EQ(static_cast<int16_t>(m_seen.Find(WM::MOUSEWHEEL)->wParam >> 16), -240);

    RD::SMouseDeviceState state;
    ASSERT_TRUE(m_pWindow->ReadMouseDevice(state));
    EXPECT_EQ(state.lX, 10); // from the first move on: 15 -> 25
    EXPECT_EQ(state.lY, -10);
    EXPECT_EQ(state.lZ, -240);
    EXPECT_NE(state.rgbButtons[0], 0);
    EXPECT_NE(state.rgbButtons[1], 0);
    ASSERT_TRUE(m_pWindow->ReadMouseDevice(state)); // read and reset
    EXPECT_EQ(state.lX, 0);
    EXPECT_EQ(state.lZ, 0);
}

TEST_F(QtWindowTest, DroppedFilesArriveAsDropFilesOnlyWhenDropsAreAllowed)
{
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile("/data/model/a.mesh"), QUrl::fromLocalFile("/data/b.dae")});
    QDropEvent refused(QPointF(5, 6), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    Deliver(refused);
    EXPECT_EQ(m_seen.Find(WM::DROPFILES), nullptr);
    m_pWindow->AcceptFileDrops(true);
    QDropEvent drop(QPointF(5, 6), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    Deliver(drop);
    ASSERT_NE(m_seen.Find(WM::DROPFILES), nullptr);
    EXPECT_EQ(m_seen.dropped, (std::vector<std::string>{"/data/model/a.mesh", "/data/b.dae"}));
}

TEST_F(QtWindowTest, ClosingSendsCloseThenDestroysAndTheNextPumpDeliversQuit)
{
    m_seen.bKeepOnClose = true; // a handler that takes the close keeps the window
    m_pWindow->GetWidget()->close();
    EXPECT_TRUE(m_pWindow->Exists());
    m_seen.bKeepOnClose = false;
    m_pWindow->GetWidget()->close();
    EXPECT_FALSE(m_pWindow->Exists());
    m_pWindow->PumpMessages(30.0);
    EXPECT_EQ(m_seen.Numbers(), (std::vector<uint32_t>{WM::CLOSE, WM::CLOSE, WM::DESTROY, WM::QUIT}));
}

TEST_F(QtWindowTest, TitlePlacementAndResizingFollowTheCalls)
{
    m_pWindow->SetTitle("Editor (Build x)");
    EXPECT_EQ(m_pWindow->GetTitle(), "Editor (Build x)");
    m_pWindow->SetResizable(true);
    m_pWindow->Move(30, 40, 640, 480);
    int32_t iW = 0, iH = 0;
    m_pWindow->GetClientSize(iW, iH);
    const RD::SWindowRect outer = m_pWindow->GetOuterRect();
    EXPECT_EQ(outer.iW, 640);
    EXPECT_EQ(outer.iH, 480);
    EXPECT_LE(iW, 640);
    EXPECT_GT(iW, 0);
    m_pWindow->PostMessage(WM::KEYDOWN, 'W', 1); // posted messages wait for the pump
    EXPECT_EQ(m_seen.Find(WM::KEYDOWN), nullptr);
    m_pWindow->PumpMessages(-1.0);
    EXPECT_NE(m_seen.Find(WM::KEYDOWN), nullptr);
}
