// COutputDebuger: a line sink for the debug output, with an optional copy to a stream.
// COutputDebugerPC is the process-wide one; it exists before main and after it.
#pragma once

#include "Utils/Utility/GUtLock.h"

#include <cstdio>

class COutputDebuger
{
public:
    virtual ~COutputDebuger() = default;
    // Writes pcText and a line feed to the debug output, and to the stream if one is set.
    virtual void Print(const char* pcText) = 0;
    // The stream that gets a copy of every line (not owned; null: none). The caller keeps it
    // open until it sets another.
    virtual void SetStream(FILE* pStream) = 0;

protected:
    COutputDebuger() = default;
    COutputDebuger(const COutputDebuger&) = delete;
    COutputDebuger& operator=(const COutputDebuger&) = delete;
};

class COutputDebugerPC final : public COutputDebuger
{
public:
    static COutputDebugerPC& Get();

    void Print(const char* pcText) override;
    void SetStream(FILE* pStream) override;

private:
    GUtCriticalSection m_lock;
    FILE* m_pStream = nullptr;
};
