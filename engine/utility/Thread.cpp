#include "engine/utility/Thread.h"

namespace Kestrin::Utility
{

CThread::~CThread()
{
    Join();
}

void CThread::Start(bool bSuspended)
{
    if (m_thread.joinable())
    {
        return;
    }
    if (!bSuspended)
    {
        m_resume.Set();
    }
    m_thread = std::thread(
        [this]
        {
            m_resume.Wait();
            Run();
        });
}

void CThread::Resume()
{
    m_resume.Set();
}

void CThread::Join()
{
    if (m_thread.joinable())
    {
        // A suspended thread that is never resumed would wait for ever.
        m_resume.Set();
        m_thread.join();
    }
}

} // namespace Kestrin::Utility
