// The desktop clipboard as text. The platform installs its own (Qt's on Linux); until then,
// and in a run with no display, an in-process clipboard stands in.
#pragma once

#include "Utils/Utility/GUtLock.h"

#include <string>

namespace Kestrin::Ext
{

class IClipboard
{
public:
    virtual ~IClipboard() = default;
    // Replaces the clipboard's content with the text.
    virtual void SetText(const std::string& strText) = 0;
    // The clipboard's text; empty when it holds none.
    virtual std::string GetText() = 0;

protected:
    IClipboard() = default;
    IClipboard(const IClipboard&) = delete;
    IClipboard& operator=(const IClipboard&) = delete;
};

class CMemoryClipboard final : public IClipboard
{
public:
    void SetText(const std::string& strText) override;
    std::string GetText() override;

private:
    GUtCriticalSection m_lock;
    std::string m_strText;
};

// The clipboard in use; never null.
IClipboard* GetClipboard();
// Installs pClipboard (not owned); null restores the in-process clipboard.
void SetClipboard(IClipboard* pClipboard);

} // namespace Kestrin::Ext
