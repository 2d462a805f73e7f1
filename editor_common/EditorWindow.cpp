#include "editor_common/EditorWindow.h"

#include <atomic>

namespace
{
CNullEditorWindowFactory g_nullFactory;
std::atomic<IEditorWindowFactory*> g_pFactory{&g_nullFactory};
} // namespace

IEditorWindowFactory* GetEditorWindowFactory()
{
    return g_pFactory.load();
}

void SetEditorWindowFactory(IEditorWindowFactory* pFactory)
{
    g_pFactory.store(pFactory ? pFactory : &g_nullFactory);
}

#include "editor_common/EditorConfig.h"

#include <string>

void RememberToolWindowRect(const IEditorWindow* pWindow, SEditorRect& rect)
{
    if (pWindow)
    {
        pWindow->GetRect(rect);
    }
}

void OpenToolWindow(IEditorWindow*& pWindow, const char* pcTitle, SEditorRect& rect, bool bTop)
{
    if (pWindow && !pWindow->IsOpen())
    {
        RememberToolWindowRect(pWindow, rect);
        delete pWindow;
        pWindow = nullptr;
    }
    if (!pWindow)
    {
        pWindow = GetEditorWindowFactory()->CreateToolWindow(pcTitle, rect, bTop);
    }
    pWindow->Raise();
}

void CloseToolWindow(IEditorWindow*& pWindow, SEditorRect& rect)
{
    if (!pWindow)
    {
        return;
    }
    RememberToolWindowRect(pWindow, rect);
    pWindow->Close();
    delete pWindow;
    pWindow = nullptr;
}

void ReadToolWindowPlace(const CEditorConfig& config, const char* pcPrefix, SEditorRect& rect, bool* pbTop)
{
    const std::string strPrefix(pcPrefix);
    config.ReadInt((strPrefix + "X").c_str(), rect.iX);
    config.ReadInt((strPrefix + "Y").c_str(), rect.iY);
    config.ReadInt((strPrefix + "W").c_str(), rect.iW);
    config.ReadInt((strPrefix + "H").c_str(), rect.iH);
    if (pbTop)
    {
        config.ReadBool((strPrefix + "Top").c_str(), *pbTop);
    }
}

void WriteToolWindowPlace(CEditorConfig& config, const char* pcPrefix, const SEditorRect& rect,
                          const bool* pbTop)
{
    const std::string strPrefix(pcPrefix);
    config.WriteInt((strPrefix + "X").c_str(), rect.iX);
    config.WriteInt((strPrefix + "Y").c_str(), rect.iY);
    config.WriteInt((strPrefix + "W").c_str(), rect.iW);
    config.WriteInt((strPrefix + "H").c_str(), rect.iH);
    if (pbTop)
    {
        config.WriteBool((strPrefix + "Top").c_str(), *pbTop);
    }
}
