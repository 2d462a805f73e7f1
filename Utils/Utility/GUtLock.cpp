#include "Utils/Utility/GUtLock.h"

#include <chrono>

void GUtEvent::Set()
{
    {
        std::lock_guard<std::mutex> guard(m_mutex);
        m_bSet = true;
    }
    if (m_bManualReset)
    {
        m_cond.notify_all();
    }
    else
    {
        m_cond.notify_one();
    }
}

void GUtEvent::Reset()
{
    std::lock_guard<std::mutex> guard(m_mutex);
    m_bSet = false;
}

bool GUtEvent::Wait(int iMilliseconds)
{
    std::unique_lock<std::mutex> guard(m_mutex);
    if (iMilliseconds < 0)
    {
        m_cond.wait(guard, [this] { return m_bSet; });
    }
    else if (!m_cond.wait_for(guard, std::chrono::milliseconds(iMilliseconds), [this] { return m_bSet; }))
    {
        return false;
    }
    if (!m_bManualReset)
    {
        m_bSet = false;
    }
    return true;
}

bool GUtEvent::IsSet()
{
    std::lock_guard<std::mutex> guard(m_mutex);
    return m_bSet;
}
