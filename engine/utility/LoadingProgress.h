// The counter behind a loading screen: work expected and work done, in weight units (the
// bytes of each resource), with the done part kept per category ("Material", "Fx", "Mesh")
// for the screen's text. Reports may come from any thread.
#pragma once

#include "Utils/Utility/GUtLock.h"
#include "Utils/Utility/GUtString.h"

#include <cstdint>
#include <map>
#include <string>

namespace Kestrin::Utility
{

class ILoadingProgress
{
public:
    virtual ~ILoadingProgress() = default;

    // Adds work that must be done before the screen can close.
    virtual void AddExpected(uint64_t uWeight) = 0;
    // Records finished work under a category; a null category counts as "".
    virtual void Report(const char* pcCategory, uint64_t uWeight) = 0;
    // Done over expected, from 0 to 1; 1 when nothing is expected or more is done than was.
    virtual float GetFraction() = 0;
    // The category of the last report, or empty before any.
    virtual GUtString GetLastCategory() = 0;
    // Forgets all counts, for the next loading screen.
    virtual void Reset() = 0;

protected:
    ILoadingProgress() = default;
    ILoadingProgress(const ILoadingProgress&) = delete;
    ILoadingProgress& operator=(const ILoadingProgress&) = delete;
};

class CLoadingProgress final : public ILoadingProgress
{
public:
    void AddExpected(uint64_t uWeight) override;
    void Report(const char* pcCategory, uint64_t uWeight) override;
    float GetFraction() override;
    GUtString GetLastCategory() override;
    void Reset() override;

    uint64_t GetExpected();
    uint64_t GetDone();
    // The work done under one category.
    uint64_t GetDone(const char* pcCategory);

private:
    GUtCriticalSection m_lock;
    uint64_t m_uExpected = 0;
    uint64_t m_uDone = 0;
    std::map<std::string, uint64_t> m_doneByCategory;
    std::string m_strLastCategory;
};

// The progress of the loading screen now shown; null when none.
ILoadingProgress* GetLoadingProgress();
void SetLoadingProgress(ILoadingProgress* pProgress);

} // namespace Kestrin::Utility
