#include "engine/utility/AsyncLoader.h"
#include "engine/utility/LoadingProgress.h"

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

using namespace Kestrin::Utility;

namespace
{
constexpr uint32_t MIB = 0x100000;
constexpr auto DEADLINE = std::chrono::seconds(20);

// What each task did, in order, and on which thread. Tests wait on it: a line appears the
// moment a stage begins, so a gated stage is known to be running.
class CJournal
{
public:
    void Add(const std::string& strLine)
    {
        {
            std::lock_guard<std::mutex> guard(m_mutex);
            m_lines.push_back(strLine);
        }
        m_cond.notify_all();
    }
    std::vector<std::string> Lines()
    {
        std::lock_guard<std::mutex> guard(m_mutex);
        return m_lines;
    }
    // The lines of one task: "<stage> <name>[ <where>]" and "~<name>".
    std::vector<std::string> Of(const std::string& strName)
    {
        std::vector<std::string> out;
        for (const std::string& line : Lines())
        {
            size_t uStart = line[0] == '~' ? 1 : line.find(' ') + 1;
            std::string strTask = line.substr(uStart, line.find(' ', uStart) - uStart);
            if (strTask == strName)
            {
                out.push_back(line);
            }
        }
        return out;
    }
    // The names of the tasks that ran one stage, in order.
    std::vector<std::string> Stage(const std::string& strStage)
    {
        std::vector<std::string> out;
        for (const std::string& line : Lines())
        {
            if (line.rfind(strStage + " ", 0) == 0)
            {
                out.push_back(line.substr(strStage.size() + 1));
            }
        }
        return out;
    }
    bool WaitFor(const std::string& strLine)
    {
        std::unique_lock<std::mutex> guard(m_mutex);
        return m_cond.wait_for(
            guard, DEADLINE,
            [&] { return std::find(m_lines.begin(), m_lines.end(), strLine) != m_lines.end(); });
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_cond;
    std::vector<std::string> m_lines;
};

struct STaskPlan
{
    int32_t iPriority = CLoadTask::DEFAULT_PRIORITY;
    uint32_t uSize = 0;
    bool bLoad = true;
    bool bPreprocess = true;
    bool bComplete = true;
    GUtEvent* pLoadGate = nullptr; // the stage waits for it before going on
    GUtEvent* pPreprocessGate = nullptr;
    std::function<void(CLoadTask&)> onComplete = nullptr;
    std::function<void(CLoadTask&)> onFail = nullptr;
};

std::thread::id g_mainThread;

// Journals "Load X", "Preprocess X", "Complete X", "Fail X" and "~X"; main-thread-only
// stages journal "... X off-main" when they run anywhere else, and the load stages
// "... X on-main" when they run on the main thread.
class CTestTask final : public CLoadTask
{
public:
    CTestTask(CJournal& journal, const char* pcName, STaskPlan plan = {})
        : CLoadTask(pcName, plan.iPriority), m_journal(journal), m_plan(std::move(plan))
    {
    }
    ~CTestTask() override { m_journal.Add("~" + m_strName.ToStd()); }

    bool Load() override
    {
        m_journal.Add("Load " + m_strName.ToStd() + Where(false));
        if (m_plan.pLoadGate)
        {
            m_plan.pLoadGate->Wait();
        }
        m_uSize = m_plan.uSize;
        return m_plan.bLoad;
    }
    bool Preprocess() override
    {
        m_journal.Add("Preprocess " + m_strName.ToStd() + Where(false));
        if (m_plan.pPreprocessGate)
        {
            m_plan.pPreprocessGate->Wait();
        }
        return m_plan.bPreprocess;
    }
    bool Complete() override
    {
        m_journal.Add("Complete " + m_strName.ToStd() + Where(true));
        if (m_plan.onComplete)
        {
            m_plan.onComplete(*this);
        }
        return m_plan.bComplete;
    }
    void Fail() override
    {
        m_journal.Add("Fail " + m_strName.ToStd() + Where(true));
        if (m_plan.onFail)
        {
            m_plan.onFail(*this);
        }
    }

private:
    static std::string Where(bool bMainOnly)
    {
        bool bMain = std::this_thread::get_id() == g_mainThread;
        if (bMainOnly)
        {
            return bMain ? "" : " off-main";
        }
        return bMain ? " on-main" : "";
    }

    CJournal& m_journal;
    STaskPlan m_plan;
};

using Lines = std::vector<std::string>;

class AsyncLoaderTest : public ::testing::Test
{
protected:
    void SetUp() override { g_mainThread = std::this_thread::get_id(); }

    CTestTask* Task(const char* pcName, STaskPlan plan = {})
    {
        return new CTestTask(m_journal, pcName, plan);
    }

    // Waits until the loader moves a task to a state. Polls: states change on loader threads
    // that signal nothing a test can wait on, and only the outcome matters, not the time.
    bool WaitForState(CAsyncLoader& loader, const CLoadTask* pTask, CAsyncLoader::ETaskState eState)
    {
        auto end = std::chrono::steady_clock::now() + DEADLINE;
        while (loader.GetState(pTask) != eState)
        {
            if (std::chrono::steady_clock::now() > end)
            {
                return false;
            }
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        }
        return true;
    }

    CJournal m_journal;
};
} // namespace

// ---------------------------------------------------------------------------------------
// Synchronous paths

TEST_F(AsyncLoaderTest, DisabledLoaderAndPriorityZeroRunEveryStageBeforeSubmitReturns)
{
    CAsyncLoader loader;
    loader.Start(false);
    loader.Submit(Task("A", {.iPriority = 1}));
    loader.Submit(Task("B", {.iPriority = 3, .bPreprocess = false}));
    loader.Submit(Task("C", {.bComplete = false}));
    loader.Submit(nullptr);
    EXPECT_EQ(m_journal.Lines(),
              (Lines{"Load A on-main", "Preprocess A on-main", "Complete A", "~A", "Load B on-main",
                     "Preprocess B on-main", "Fail B", "~B", "Load C on-main", "Preprocess C on-main",
                     "Complete C", "Fail C", "~C"}));

    CAsyncLoader enabled;
    enabled.Start(true);
    ASSERT_TRUE(enabled.IsEnabled());
    enabled.Submit(Task("Z", {.iPriority = 0, .bLoad = false}));
    EXPECT_EQ(m_journal.Of("Z"), (Lines{"Load Z on-main", "Fail Z", "~Z"}));
}

// ---------------------------------------------------------------------------------------
// Queues and the byte limit

TEST_F(AsyncLoaderTest, LoadQueuesGoHighPriorityFirstAndPriorityOneLast)
{
    CAsyncLoader loader;
    loader.Start(true);
    GUtEvent gate(true, false);
    loader.Submit(Task("Blocker", {.pLoadGate = &gate}));
    ASSERT_TRUE(m_journal.WaitFor("Load Blocker"));

    loader.Submit(Task("OneA", {.iPriority = 1}));
    loader.Submit(Task("TwoA", {.iPriority = 2}));
    loader.Submit(Task("ThreeA", {.iPriority = 3}));
    loader.Submit(Task("TwoB", {.iPriority = 2}));
    loader.Submit(Task("Five", {.iPriority = 5}));
    loader.Submit(Task("OneB", {.iPriority = 1}));
    loader.Submit(Task("ThreeB", {.iPriority = 3}));
    gate.Set();
    loader.WaitForAll();

    const Lines order{"Blocker", "ThreeA", "Five", "ThreeB", "TwoA", "TwoB", "OneA", "OneB"};
    EXPECT_EQ(m_journal.Stage("Load"), order);
    EXPECT_EQ(m_journal.Stage("Preprocess"), order);
    EXPECT_EQ(m_journal.Stage("Complete"), order); // none "off-main"
    EXPECT_EQ(loader.GetBytesInFlight(), 0u);
}

TEST_F(AsyncLoaderTest, LoadingPausesOnceTwoMebibytesAreInFlightUntilTheMainThreadCompletes)
{
    CAsyncLoader loader;
    GUtEvent full(true, false);
    loader.SetIdleHook(
        [&](CAsyncLoader::EIdle eReason)
        {
            if (eReason == CAsyncLoader::IDLE_LOAD_FULL)
            {
                full.Set();
            }
        });
    loader.Start(true);

    // One task above the limit still loads, as the test precedes the load.
    CLoadTask* pBig = Task("Big", {.uSize = 3 * MIB});
    CLoadTask* pSmall = Task("Small", {.uSize = 1});
    loader.Submit(pBig);
    loader.Submit(pSmall);
    ASSERT_TRUE(WaitForState(loader, pBig, CAsyncLoader::STATE_COMPLETION_QUEUE));
    ASSERT_TRUE(full.Wait(static_cast<int>(std::chrono::milliseconds(DEADLINE).count())));
    EXPECT_EQ(loader.GetState(pSmall), CAsyncLoader::STATE_LOAD_QUEUE);
    EXPECT_EQ(loader.GetBytesInFlight(), 3 * MIB);
    loader.Tick(3);
    loader.WaitForAll();
    EXPECT_EQ(m_journal.Lines(), (Lines{"Load Big", "Preprocess Big", "Complete Big", "~Big", "Load Small",
                                        "Preprocess Small", "Complete Small", "~Small"}));

    // Exactly the limit pauses too.
    full.Reset();
    CLoadTask* pHalfA = Task("HalfA", {.uSize = MIB});
    CLoadTask* pHalfB = Task("HalfB", {.uSize = MIB});
    CLoadTask* pNext = Task("Next", {.uSize = 1});
    loader.Submit(pHalfA);
    loader.Submit(pHalfB);
    loader.Submit(pNext);
    ASSERT_TRUE(WaitForState(loader, pHalfB, CAsyncLoader::STATE_COMPLETION_QUEUE));
    ASSERT_TRUE(full.Wait(static_cast<int>(std::chrono::milliseconds(DEADLINE).count())));
    EXPECT_EQ(loader.GetState(pNext), CAsyncLoader::STATE_LOAD_QUEUE);
    EXPECT_EQ(loader.GetBytesInFlight(), 2 * MIB);
    loader.WaitForAll();
    EXPECT_EQ(m_journal.Stage("Complete"), (Lines{"Big", "Small", "HalfA", "HalfB", "Next"}));
    EXPECT_EQ(loader.GetBytesInFlight(), 0u);
}

// ---------------------------------------------------------------------------------------
// Cancel, in each state a task can be cancelled in

TEST_F(AsyncLoaderTest, CancelledTasksGetNeitherCompleteNorFailInAnyState)
{
    CAsyncLoader loader;
    loader.Start(true);

    // 2: waiting in a load queue behind a gated task.
    GUtEvent loadGate(true, false);
    loader.Submit(Task("Blocker", {.pLoadGate = &loadGate}));
    ASSERT_TRUE(m_journal.WaitFor("Load Blocker"));
    CLoadTask* pQueued = Task("Queued", {.uSize = MIB});
    loader.Submit(pQueued);
    loader.Cancel(pQueued);
    EXPECT_EQ(loader.GetState(pQueued), CAsyncLoader::STATE_CANCELLED);
    EXPECT_TRUE(loader.IsPending(pQueued));
    loadGate.Set();
    ASSERT_TRUE(m_journal.WaitFor("~Queued"));
    EXPECT_EQ(m_journal.Of("Queued"), (Lines{"~Queued"}));

    // 3: inside Load; what it loaded is thrown away.
    GUtEvent loadingGate(true, false);
    CLoadTask* pLoading = Task("Loading", {.uSize = MIB, .pLoadGate = &loadingGate});
    loader.Submit(pLoading);
    ASSERT_TRUE(m_journal.WaitFor("Load Loading"));
    loader.Cancel(pLoading);
    loadingGate.Set();
    ASSERT_TRUE(m_journal.WaitFor("~Loading"));
    EXPECT_EQ(m_journal.Of("Loading"), (Lines{"Load Loading", "~Loading"}));

    // 4: loaded, waiting behind a gated preprocess.
    GUtEvent preprocessGate(true, false);
    loader.Submit(Task("PreBlocker", {.pPreprocessGate = &preprocessGate}));
    ASSERT_TRUE(m_journal.WaitFor("Preprocess PreBlocker"));
    CLoadTask* pLoaded = Task("Loaded", {.uSize = MIB});
    loader.Submit(pLoaded);
    ASSERT_TRUE(WaitForState(loader, pLoaded, CAsyncLoader::STATE_PREPROCESS_QUEUE));
    EXPECT_EQ(loader.GetBytesInFlight(), MIB);
    loader.Cancel(pLoaded);
    preprocessGate.Set();
    ASSERT_TRUE(m_journal.WaitFor("~Loaded"));
    EXPECT_EQ(m_journal.Of("Loaded"), (Lines{"Load Loaded", "~Loaded"}));

    // 5: inside Preprocess.
    GUtEvent preparingGate(true, false);
    CLoadTask* pPreparing = Task("Preparing", {.uSize = MIB, .pPreprocessGate = &preparingGate});
    loader.Submit(pPreparing);
    ASSERT_TRUE(m_journal.WaitFor("Preprocess Preparing"));
    loader.Cancel(pPreparing);
    preparingGate.Set();
    ASSERT_TRUE(m_journal.WaitFor("~Preparing"));
    EXPECT_EQ(m_journal.Of("Preparing"), (Lines{"Load Preparing", "Preprocess Preparing", "~Preparing"}));

    // 6 and 8: waiting for the main thread.
    CLoadTask* pPrepared = Task("Prepared", {.uSize = MIB});
    CLoadTask* pFailed = Task("Failed", {.bLoad = false});
    loader.Submit(pPrepared);
    loader.Submit(pFailed);
    ASSERT_TRUE(WaitForState(loader, pPrepared, CAsyncLoader::STATE_COMPLETION_QUEUE));
    ASSERT_TRUE(WaitForState(loader, pFailed, CAsyncLoader::STATE_FAILURE_QUEUE));
    loader.Cancel(pPrepared);
    loader.Cancel(pFailed);

    // 7: a task that cancels itself inside Complete, then reports failure.
    CLoadTask* pCompleting =
        Task("Completing",
             {.bComplete = false, .onComplete = [](CLoadTask& task) { task.GetLoader()->Cancel(&task); }});
    loader.Submit(pCompleting);
    ASSERT_TRUE(WaitForState(loader, pCompleting, CAsyncLoader::STATE_COMPLETION_QUEUE));
    loader.WaitForAll();
    EXPECT_EQ(m_journal.Of("Prepared"), (Lines{"Load Prepared", "Preprocess Prepared", "~Prepared"}));
    EXPECT_EQ(m_journal.Of("Failed"), (Lines{"Load Failed", "~Failed"}));
    EXPECT_EQ(m_journal.Of("Completing"),
              (Lines{"Load Completing", "Preprocess Completing", "Complete Completing", "~Completing"}));
    EXPECT_EQ(loader.GetBytesInFlight(), 0u);
    for (CLoadTask* pTask : {pQueued, pLoading, pLoaded, pPreparing, pPrepared, pFailed, pCompleting})
    {
        EXPECT_FALSE(loader.IsPending(pTask));
    }
}

// ---------------------------------------------------------------------------------------
// ChangePriority

TEST_F(AsyncLoaderTest, ChangePriorityMovesQueuedTasksAndZeroCompletesAtOnce)
{
    CAsyncLoader loader;
    loader.Start(true);
    GUtEvent gate(true, false);
    CLoadTask* pBlocker = Task("Blocker", {.pLoadGate = &gate});
    loader.Submit(pBlocker);
    ASSERT_TRUE(m_journal.WaitFor("Load Blocker"));
    CLoadTask* pLow = Task("Low", {.iPriority = 1});
    CLoadTask* pRaised = Task("Raised", {.iPriority = 1});
    CLoadTask* pNow = Task("Now");
    CLoadTask* pDropped = Task("Dropped", {.iPriority = 3});
    for (CLoadTask* pTask : {pLow, pRaised, pNow, pDropped})
    {
        loader.Submit(pTask);
    }

    EXPECT_FALSE(loader.ChangePriority(nullptr, 3));
    EXPECT_FALSE(loader.ChangePriority(pLow, 1));     // already has it
    EXPECT_FALSE(loader.ChangePriority(pBlocker, 3)); // loading
    loader.Cancel(pDropped);
    EXPECT_FALSE(loader.ChangePriority(pDropped, 2)); // cancelled
    EXPECT_TRUE(loader.ChangePriority(pRaised, 3));
    EXPECT_EQ(pRaised->GetPriority(), 3);

    EXPECT_TRUE(loader.ChangePriority(pNow, 0));
    EXPECT_EQ(m_journal.Of("Now"),
              (Lines{"Load Now on-main", "Preprocess Now on-main", "Complete Now", "~Now"}));
    EXPECT_FALSE(loader.IsPending(pNow));

    gate.Set();
    loader.WaitForAll();
    EXPECT_EQ(m_journal.Stage("Load"), (Lines{"Blocker", "Now on-main", "Raised", "Low"}));
    ASSERT_TRUE(m_journal.WaitFor("~Dropped"));
    EXPECT_EQ(m_journal.Of("Dropped"), (Lines{"~Dropped"}));
}

// ---------------------------------------------------------------------------------------
// Failures and the main thread

TEST_F(AsyncLoaderTest, FailuresReachFailOnTheMainThreadAndBytesNeverGoNegative)
{
    CAsyncLoader loader;
    loader.Start(true);
    loader.Submit(Task("LoadFails", {.uSize = MIB, .bLoad = false}));
    loader.Submit(Task("PreprocessFails", {.uSize = MIB, .bPreprocess = false}));
    loader.Submit(Task("CompleteFails", {.uSize = MIB, .bComplete = false}));
    loader.Submit(Task("Fine", {.uSize = MIB}));
    // Returns even when only the failure queue holds tasks.
    loader.WaitForAll();
    EXPECT_EQ(m_journal.Of("LoadFails"), (Lines{"Load LoadFails", "Fail LoadFails", "~LoadFails"}));
    EXPECT_EQ(m_journal.Of("PreprocessFails"), (Lines{"Load PreprocessFails", "Preprocess PreprocessFails",
                                                      "Fail PreprocessFails", "~PreprocessFails"}));
    EXPECT_EQ(m_journal.Of("CompleteFails"),
              (Lines{"Load CompleteFails", "Preprocess CompleteFails", "Complete CompleteFails",
                     "Fail CompleteFails", "~CompleteFails"}));
    EXPECT_EQ(m_journal.Of("Fine"), (Lines{"Load Fine", "Preprocess Fine", "Complete Fine", "~Fine"}));
    EXPECT_EQ(loader.GetBytesInFlight(), 0u);
}

TEST_F(AsyncLoaderTest, TickKeepsToItsBudgetYetMovesEachQueueOnce)
{
    GUtManualClock clock;
    CAsyncLoader loader(&clock);
    loader.Start(true);
    auto spend = [&clock](CLoadTask&) { clock.Advance(2.0); };
    std::vector<CLoadTask*> tasks;
    for (const char* pcName : {"C1", "C2", "C3", "C4", "C5"})
    {
        tasks.push_back(Task(pcName, {.onComplete = spend}));
    }
    for (const char* pcName : {"F1", "F2"})
    {
        tasks.push_back(Task(pcName, {.bLoad = false, .onFail = spend}));
    }
    for (CLoadTask* pTask : tasks)
    {
        loader.Submit(pTask);
    }
    for (CLoadTask* pTask : tasks)
    {
        ASSERT_TRUE(WaitForState(loader, pTask,
                                 pTask->GetName()[0] == 'C' ? CAsyncLoader::STATE_COMPLETION_QUEUE
                                                            : CAsyncLoader::STATE_FAILURE_QUEUE));
    }

    // 2 ms each: two completions use up 3 ms; the failure queue still moves by one.
    loader.Tick(3);
    EXPECT_EQ(m_journal.Stage("Complete"), (Lines{"C1", "C2"}));
    EXPECT_EQ(m_journal.Stage("Fail"), (Lines{"F1"}));
    loader.Tick(0);
    EXPECT_EQ(m_journal.Stage("Complete"), (Lines{"C1", "C2", "C3"}));
    EXPECT_EQ(m_journal.Stage("Fail"), (Lines{"F1", "F2"}));
    loader.Tick(100);
    EXPECT_EQ(m_journal.Stage("Complete"), (Lines{"C1", "C2", "C3", "C4", "C5"}));
    loader.Tick(3); // nothing left: a no-op
    EXPECT_EQ(m_journal.Lines().size(), 5u * 4u + 2u * 3u);
}

// ---------------------------------------------------------------------------------------
// Stop

TEST_F(AsyncLoaderTest, StopFailsEveryQueuedTaskButCancelledOnesAndEmptiesTheLoader)
{
    CAsyncLoader loader;
    GUtEvent full(true, false);
    loader.SetIdleHook(
        [&](CAsyncLoader::EIdle eReason)
        {
            if (eReason == CAsyncLoader::IDLE_LOAD_FULL)
            {
                full.Set();
            }
        });
    SetAsyncLoader(&loader);
    loader.Start(true);
    CLoadTask* pBig = Task("Big", {.uSize = 2 * MIB});
    loader.Submit(pBig);
    ASSERT_TRUE(WaitForState(loader, pBig, CAsyncLoader::STATE_COMPLETION_QUEUE));
    ASSERT_TRUE(full.Wait(static_cast<int>(std::chrono::milliseconds(DEADLINE).count())));
    CLoadTask* pLow = Task("Low", {.iPriority = 1});
    CLoadTask* pMid = Task("Mid");
    CLoadTask* pHigh = Task("High", {.iPriority = 3});
    CLoadTask* pGone = Task("Gone", {.iPriority = 3});
    for (CLoadTask* pTask : {pLow, pMid, pHigh, pGone})
    {
        loader.Submit(pTask);
    }
    loader.Cancel(pGone);

    loader.Stop();
    SetAsyncLoader(nullptr);
    EXPECT_EQ(m_journal.Lines(), (Lines{"Load Big", "Preprocess Big", "Fail High", "~High", "~Gone",
                                        "Fail Mid", "~Mid", "Fail Low", "~Low", "Fail Big", "~Big"}));
    EXPECT_FALSE(loader.IsEnabled());
    EXPECT_EQ(loader.GetBytesInFlight(), 0u);
    for (CLoadTask* pTask : {pBig, pLow, pMid, pHigh, pGone})
    {
        EXPECT_FALSE(loader.IsPending(pTask));
    }
    EXPECT_EQ(GetAsyncLoader(), nullptr);

    // After Stop everything runs on the calling thread.
    loader.Submit(Task("After"));
    EXPECT_EQ(m_journal.Of("After"),
              (Lines{"Load After on-main", "Preprocess After on-main", "Complete After", "~After"}));
    loader.Stop();
}

TEST_F(AsyncLoaderTest, RestartedLoaderLoadsAgain)
{
    CAsyncLoader loader;
    loader.Start(true);
    loader.Stop();
    loader.Start(true);
    loader.Submit(Task("Again"));
    loader.WaitForAll();
    ASSERT_TRUE(m_journal.WaitFor("~Again"));
    EXPECT_EQ(m_journal.Of("Again"), (Lines{"Load Again", "Preprocess Again", "Complete Again", "~Again"}));
}

// ---------------------------------------------------------------------------------------
// Loading progress

TEST(LoadingProgress, CountsExpectedAndDoneWorkPerCategory)
{
    CLoadingProgress progress;
    EXPECT_EQ(progress.GetFraction(), 1.0f);
    progress.AddExpected(400);
    progress.Report("Material", 100);
    progress.Report("Fx", 100);
    progress.Report("Material", 50);
    EXPECT_FLOAT_EQ(progress.GetFraction(), 0.625f);
    EXPECT_EQ(progress.GetDone("Material"), 150u);
    EXPECT_EQ(progress.GetDone("Mesh"), 0u);
    EXPECT_EQ(progress.GetLastCategory().ToStd(), "Material");
    progress.Report(nullptr, 500);
    EXPECT_EQ(progress.GetFraction(), 1.0f);
    EXPECT_EQ(progress.GetDone(""), 500u);
    progress.Reset();
    EXPECT_EQ(progress.GetExpected(), 0u);
    EXPECT_EQ(progress.GetDone(), 0u);
    EXPECT_TRUE(progress.GetLastCategory().IsEmpty());

    SetLoadingProgress(&progress);
    EXPECT_EQ(GetLoadingProgress(), &progress);
    SetLoadingProgress(nullptr);
}
