#include "app/Linux/QtPlatform.h"

#include "app/Linux/QtWindow.h"

#include "Utils/Utility/GUtDebug.h"

#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QMessageBox>
#include <QPixmap>
#include <QPointer>
#include <QScreen>
#include <QThread>

#include <cstdio>
#include <cstdlib>

namespace Ovrel
{

namespace
{
CQtWindowSystem g_windowSystem;
CQtEditorWindowFactory g_toolWindowFactory;
CQtClipboard g_clipboard;
QPointer<QWidget> g_pMainWidget;

bool OnGuiThread()
{
    return QApplication::instance() && QThread::currentThread() == QApplication::instance()->thread();
}

// A modal box owned by the main window, with an empty caption. From another thread the box
// is shown by the main thread at its next pump, and the text goes to standard error at once.
void ShowMessageBox(const char* pcCaption, const char* pcText)
{
    const QString strCaption = QString::fromUtf8(pcCaption ? pcCaption : "");
    const QString strText = QString::fromUtf8(pcText ? pcText : "");
    if (!OnGuiThread())
    {
        fprintf(stderr, "[message box] %s\n", pcText ? pcText : "");
        QMetaObject::invokeMethod(
            QApplication::instance(),
            [strCaption, strText] { QMessageBox::information(g_pMainWidget, strCaption, strText); },
            Qt::QueuedConnection);
        return;
    }
    QMessageBox::information(g_pMainWidget, strCaption, strText);
}

// A tool window of an editor: a top-level Qt tool window above the main window.
class CQtToolWidget final : public QWidget
{
public:
    CQtToolWidget(QWidget* pParent, bool* pbOpen) : QWidget(pParent, Qt::Tool), m_pbOpen(pbOpen) {}

protected:
    void closeEvent(QCloseEvent* pEvent) override
    {
        *m_pbOpen = false;
        pEvent->accept();
    }

private:
    bool* m_pbOpen;
};

class CQtToolWindow final : public IEditorWindow
{
public:
    CQtToolWindow(const char* pcTitle, const SEditorRect& rect, bool bTop)
        : m_pWidget(new CQtToolWidget(g_pMainWidget, &m_bOpen))
    {
        m_pWidget->setWindowTitle(QString::fromUtf8(pcTitle));
        m_pWidget->setWindowFlag(Qt::WindowStaysOnTopHint, bTop);
        m_pWidget->move(rect.iX, rect.iY);
        m_pWidget->resize(std::max(rect.iW, 1), std::max(rect.iH, 1));
        m_pWidget->show();
    }
    ~CQtToolWindow() override { delete m_pWidget; }

    bool IsOpen() const override { return m_bOpen; }
    void Close() override
    {
        m_pWidget->close();
        m_bOpen = false;
    }
    void Raise() override
    {
        m_pWidget->show();
        m_pWidget->raise();
    }
    bool GetRect(SEditorRect& out) const override
    {
        const QRect frame = m_pWidget->frameGeometry();
        out = {frame.x(), frame.y(), frame.width(), frame.height()};
        return true;
    }
    void SetTopMost(bool bTop) override
    {
        m_pWidget->setWindowFlag(Qt::WindowStaysOnTopHint, bTop);
        if (m_bOpen)
        {
            m_pWidget->show();
        }
    }
    void SetTitle(const char* pcTitle) override { m_pWidget->setWindowTitle(QString::fromUtf8(pcTitle)); }

private:
    bool m_bOpen = true;
    CQtToolWidget* m_pWidget;
};
} // namespace

Kestrin::RenderDevice::IWindow* CQtWindowSystem::CreateMainWindow(int32_t iClientW, int32_t iClientH)
{
    CQtMainWindow* pWindow = new CQtMainWindow(iClientW, iClientH);
    g_pMainWidget = pWindow->GetWidget();
    return pWindow;
}

IEditorWindow* CQtEditorWindowFactory::CreateToolWindow(const char* pcTitle, const SEditorRect& rect,
                                                        bool bTop)
{
    return new CQtToolWindow(pcTitle, rect, bTop);
}

void CQtClipboard::SetText(const std::string& strText)
{
    QApplication::clipboard()->setText(QString::fromUtf8(strText.c_str()));
}

std::string CQtClipboard::GetText()
{
    return QApplication::clipboard()->text().toStdString();
}

void CQtPlatform::Install()
{
    Kestrin::RenderDevice::SetWindowSystem(&g_windowSystem);
    SetEditorWindowFactory(&g_toolWindowFactory);
    Kestrin::Ext::SetClipboard(&g_clipboard);
    GUtSetMessageBoxHandler(&ShowMessageBox);
}

void CQtPlatform::Uninstall()
{
    GUtSetMessageBoxHandler(nullptr);
    Kestrin::Ext::SetClipboard(nullptr);
    SetEditorWindowFactory(nullptr);
    Kestrin::RenderDevice::SetWindowSystem(nullptr);
}

bool CQtPlatform::SaveScreenshot(const char* pcPath)
{
    if (!QApplication::instance())
    {
        return false; // no display
    }
    QScreen* pScreen = QApplication::primaryScreen();
    if (!pScreen)
    {
        return false;
    }
    QApplication::processEvents();
    return pScreen->grabWindow(0).save(QString::fromUtf8(pcPath), "PNG");
}

bool CQtPlatform::DisplayAvailable()
{
    const char* pcX = getenv("DISPLAY");
    const char* pcWayland = getenv("WAYLAND_DISPLAY");
    return (pcX && *pcX) || (pcWayland && *pcWayland);
}

} // namespace Ovrel
