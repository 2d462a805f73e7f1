// A process killed in the middle of a save leaves the previous file whole: a child process
// saves a large scene over an old one and is killed while the temporary file is half
// written; the test hook stops the child there, so the kill always lands mid-write.
#include "scene/Scene.h"
#include "scene/SceneDiskFile.h"
#include "scene/tests/SceneTestUtil.h"

#include <gtest/gtest.h>

#include <filesystem>

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

using namespace Ovrel;
using namespace SceneTest;

namespace
{
int g_iReadyFd = -1;

// In the child: tells the parent the save is half way, then waits to be killed.
void StopMidWrite(const char*, int64_t, int64_t)
{
    char c = 'x';
    if (write(g_iReadyFd, &c, 1) != 1)
    {
        _exit(3);
    }
    for (;;)
    {
        pause();
    }
}

void Fill(CScene& scene, int iCount)
{
    scene.SetServices(nullptr, nullptr, nullptr, nullptr, nullptr, true);
    for (int i = 0; i < iCount; ++i)
    {
        CSceneEntity* pEntity = scene.CreateEntity(ENTITY_LOCATOR, 0);
        pEntity->SetName("Locator" + std::to_string(i));
        pEntity->SetTransform(CMatrix44::Translation({float(i), 0.0f, 0.0f}));
    }
}
} // namespace

TEST(SceneSave, AProcessKilledWhileSavingLeavesTheOldFileWhole)
{
    CTempFolder temp;
    std::string strPath = temp / "level.scene";
    {
        CScene old;
        Fill(old, 3);
        ASSERT_TRUE(old.Save(strPath));
    }
    std::vector<uint8_t> oldBytes = ReadBytes(strPath);
    ASSERT_FALSE(oldBytes.empty());

    int aiPipe[2];
    ASSERT_EQ(pipe(aiPipe), 0);
    pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0)
    {
        close(aiPipe[0]);
        g_iReadyFd = aiPipe[1];
        CScene big;
        // Some 1.5 MB: several pieces of the writer, so the hook runs before the end.
        Fill(big, 20000);
        SetReplaceFileHook(&StopMidWrite);
        big.Save(strPath);
        _exit(2);
    }
    close(aiPipe[1]);
    char c = 0;
    ssize_t iRead = read(aiPipe[0], &c, 1);
    close(aiPipe[0]);
    ASSERT_EQ(iRead, 1) << "the child ended before it was half way";
    // The temporary is partly there, the old file untouched.
    EXPECT_GT(std::filesystem::file_size(strPath + ".tmp"), 0u);
    ASSERT_EQ(kill(child, SIGKILL), 0);
    int iStatus = 0;
    ASSERT_EQ(waitpid(child, &iStatus, 0), child);
    EXPECT_TRUE(WIFSIGNALED(iStatus) && WTERMSIG(iStatus) == SIGKILL);
    EXPECT_EQ(ReadBytes(strPath), oldBytes);

    CScene reopened;
    reopened.SetServices(nullptr, nullptr, nullptr, nullptr, nullptr, true);
    ASSERT_TRUE(reopened.Open(strPath, false));
    EXPECT_EQ(reopened.GetEntityCount(), 3);
    // The next save goes over the stale temporary and replaces the file.
    Fill(reopened, 2);
    ASSERT_TRUE(reopened.Save(strPath));
    EXPECT_FALSE(std::filesystem::exists(strPath + ".tmp"));
    ASSERT_TRUE(reopened.Open(strPath, false));
    EXPECT_EQ(reopened.GetEntityCount(), 5);
}
