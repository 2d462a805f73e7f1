// Opening a scene through the background loader: the same scene as an open at once, the
// read step's and the parse step's failures, cancelling by a new open or by destruction,
// pending entities and textures, and the scene manager's OnSceneLoad after such a load.
#include "scene/Scene.h"
#include "scene/SceneLoadTask.h"
#include "scene/SceneManager.h"
#include "scene/SceneMarkerEntities.h"
#include "scene/tests/SceneFakes.h"
#include "scene/tests/SceneRecords.h"
#include "scene/tests/SceneTestUtil.h"

#include "Utils/Utility/GUtDebug.h"
#include "engine/utility/AsyncLoader.h"
#include "script/LuaScript.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

using namespace Ovrel;
using namespace SceneTest;
using Kestrin::Utility::CAsyncLoader;

namespace
{
constexpr auto DEADLINE = std::chrono::seconds(20);

// A started loader, installed as the process's one for the test's length.
class CLoaderScope
{
public:
    explicit CLoaderScope(bool bEnabled = true)
    {
        loader.Start(bEnabled);
        Kestrin::Utility::SetAsyncLoader(&loader);
    }
    ~CLoaderScope()
    {
        Kestrin::Utility::SetAsyncLoader(nullptr);
        loader.Stop();
    }
    // Frames of Tick(3) and the scene's update until the scene stops loading.
    bool RunUntilLoaded(CScene& scene)
    {
        auto end = std::chrono::steady_clock::now() + DEADLINE;
        while (scene.IsLoading())
        {
            if (std::chrono::steady_clock::now() > end)
            {
                return false;
            }
            loader.Tick(3);
            scene.Update(0.0f, 0.0f);
        }
        return true;
    }
    CAsyncLoader loader;
};

// A scene of locators named "<prefix><i>", saved to a file.
void SaveLocators(const std::string& strPath, const std::string& strPrefix, int iCount)
{
    CScene scene;
    Headless(scene);
    for (int i = 0; i < iCount; ++i)
    {
        scene.CreateEntity(ENTITY_LOCATOR, 0)->SetName(strPrefix + std::to_string(i));
    }
    ASSERT_TRUE(scene.Save(strPath));
}

class CFakeTexture final : public Kestrin::Renderer::CTexture
{
public:
    bool IsLoading() const override { return bLoading; }
    bool IsLoaded() const override { return !bLoading; }
    bool bLoading = true;
};

class CFakeTextures final : public Kestrin::Renderer::CTextureManager
{
public:
    Kestrin::Renderer::CTexture* Load(const std::string& strName, bool bAsync) override
    {
        names.push_back(strName + (bAsync ? " async" : " now"));
        textures.push_back(std::make_unique<CFakeTexture>());
        return textures.back().get();
    }
    void Release(Kestrin::Renderer::CTexture*) override { ++iReleased; }
    std::vector<std::string> names;
    std::vector<std::unique_ptr<CFakeTexture>> textures;
    int iReleased = 0;
};
} // namespace

TEST(SceneAsync, AnOpenThroughTheLoaderGivesTheSameSceneAsOneAtOnce)
{
    CTempFolder temp;
    CLoaderScope loader;
    for (bool bBig : {false, true})
    {
        CFullScene full = BuildFullScene(bBig);
        WriteBytes(temp / "full.scene", full.bytes);
        CScene once;
        Headless(once);
        ASSERT_TRUE(once.Open(temp / "full.scene", false));
        CScene later;
        Headless(later);
        ASSERT_TRUE(later.Open(temp / "full.scene", true));
        EXPECT_TRUE(later.IsLoading());
        ASSERT_NE(later.GetLoadTask(), nullptr);
        EXPECT_EQ(later.GetLoadTask()->GetFilePath(), temp / "full.scene");
        EXPECT_EQ(later.GetName(), "full");
        EXPECT_EQ(later.GetEntityCount(), 0);
        ASSERT_TRUE(loader.RunUntilLoaded(later));
        EXPECT_TRUE(later.HasLoaded());
        EXPECT_EQ(later.GetLoadTask(), nullptr);
        EXPECT_EQ(later.GetFilePath(), temp / "full.scene");
        EXPECT_EQ(WriteScene(later), WriteScene(once));
        EXPECT_EQ(WriteScene(later), full.bytes);
        EXPECT_EQ(later.GetNextEntityId(), once.GetNextEntityId());
        EXPECT_EQ(later.FindById(12)->GetGroupId(), 16);
    }
}

TEST(SceneAsync, FailuresOfEitherStepLeaveAnEmptySceneThatIsNotLoading)
{
    CTempFolder temp;
    std::vector<uint8_t> bytes = BuildFullScene(false).bytes;
    bytes.resize(200);
    WriteBytes(temp / "cut.scene", bytes);
    CLoaderScope loader;
    CLogLines log;
    CScene scene;
    Headless(scene);
    ASSERT_TRUE(scene.Open(temp / "gone.scene", true));
    ASSERT_TRUE(loader.RunUntilLoaded(scene));
    EXPECT_TRUE(log.Has("Load scene \"gone\" fail.\n"));
    EXPECT_FALSE(scene.HasLoaded());
    ASSERT_TRUE(scene.Open(temp / "cut.scene", true));
    ASSERT_TRUE(loader.RunUntilLoaded(scene));
    EXPECT_TRUE(log.Has("Load scene \"cut\" fail\n"));
    EXPECT_FALSE(scene.HasLoaded());
    EXPECT_EQ(scene.GetEntityCount(), 0);
}

TEST(SceneAsync, ANewOpenOrTheEndOfTheSceneCancelsTheRunningLoad)
{
    CTempFolder temp;
    SaveLocators(temp / "a.scene", "A", 3000);
    SaveLocators(temp / "b.scene", "B", 5);
    CLoaderScope loader;
    CScene scene;
    Headless(scene);
    // Completion runs only in Tick, on this thread: the first load cannot have finished.
    ASSERT_TRUE(scene.Open(temp / "a.scene", true));
    ASSERT_TRUE(scene.Open(temp / "b.scene", true));
    ASSERT_TRUE(loader.RunUntilLoaded(scene));
    EXPECT_EQ(scene.GetEntityCount(), 5);
    EXPECT_EQ(scene.GetName(), "b");
    loader.loader.WaitForAll();
    EXPECT_EQ(scene.GetEntityCount(), 5);
    // Opening at once also cancels.
    ASSERT_TRUE(scene.Open(temp / "a.scene", true));
    ASSERT_TRUE(scene.Open(temp / "b.scene", false));
    EXPECT_FALSE(scene.IsLoading());
    loader.loader.WaitForAll();
    EXPECT_EQ(scene.GetEntityCount(), 5);
    for (int i = 0; i < 20; ++i)
    {
        auto pDoomed = std::make_unique<CScene>();
        Headless(*pDoomed);
        ASSERT_TRUE(pDoomed->Open(temp / (i % 2 ? "a.scene" : "b.scene"), true));
        pDoomed.reset();
        loader.loader.Tick(3);
    }
    loader.loader.WaitForAll();
}

TEST(SceneAsync, ALoaderThatIsNotEnabledOpensAtOnce)
{
    CTempFolder temp;
    SaveLocators(temp / "a.scene", "A", 4);
    CLoaderScope loader(false);
    CScene scene;
    Headless(scene);
    ASSERT_TRUE(scene.Open(temp / "a.scene", true));
    EXPECT_FALSE(scene.IsLoading());
    EXPECT_TRUE(scene.HasLoaded());
    EXPECT_EQ(scene.GetEntityCount(), 4);
}

TEST(SceneAsync, TexturesAndMeshesStillLoadingKeepTheSceneLoading)
{
    CTempFolder temp;
    WriteBytes(temp / "full.scene", BuildFullScene(false).bytes);
    CLoaderScope loader;
    CFakeRenderWorld world;
    world.bNewMeshesLoading = true;
    CFakeTextures textures;
    CScene scene;
    scene.SetServices(&world, nullptr, nullptr, nullptr, nullptr, false);
    scene.SetTextureManager(&textures);
    ASSERT_TRUE(scene.Open(temp / "full.scene", true));
    auto end = std::chrono::steady_clock::now() + DEADLINE;
    while (scene.GetLoadTask() && std::chrono::steady_clock::now() < end)
    {
        loader.loader.Tick(3);
    }
    ASSERT_EQ(scene.GetLoadTask(), nullptr);
    EXPECT_EQ(textures.names,
              (std::vector<std::string>{"lightmap\\lm_000.dds async", "lightmap\\lm_001.dds async",
                                        "colorlightmap\\clm_000.dds async"}));
    ASSERT_FALSE(scene.GetPending().empty());
    EXPECT_TRUE(scene.IsLoading());
    for (auto& pMesh : world.meshes)
    {
        pMesh->bLoading = false;
    }
    // The textures still load: entries wait, and so do the entities.
    EXPECT_TRUE(scene.IsLoading());
    EXPECT_EQ(scene.GetLightMaps().entries[0].pTexture, nullptr);
    for (auto& pTexture : textures.textures)
    {
        pTexture->bLoading = false;
    }
    EXPECT_FALSE(scene.IsLoading());
    EXPECT_TRUE(scene.GetPending().empty());
    EXPECT_EQ(scene.GetLightMaps().entries[0].pTexture, textures.textures[0].get());
    scene.Clear();
    EXPECT_EQ(textures.iReleased, 3);
}

TEST(SceneAsync, TheManagerCallsOnSceneLoadOnceTheSceneIsReady)
{
    CTempFolder temp;
    SaveLocators(temp / "town.scene", "T", 3);
    GLib::Script::CLuaScript script;
    ASSERT_TRUE(script.RunString("calls = '' function OnSceneLoad(name) calls = calls .. name .. ';' end"));
    auto Calls = [&]
    {
        GUtString text;
        script.GetGlobalString("calls", text);
        return std::string(text.c_str());
    };
    CLoaderScope loader;
    CSceneManager manager;
    manager.SetServices(nullptr, nullptr, nullptr, nullptr, nullptr, true);
    manager.SetScript(&script);
    manager.SetStartScene("town", temp.Path());
    CScene* pScene = manager.LoadStartScene(true);
    ASSERT_NE(pScene, nullptr);
    EXPECT_EQ(manager.FindScene("town"), pScene);
    EXPECT_EQ(Calls(), "");
    auto end = std::chrono::steady_clock::now() + DEADLINE;
    while (Calls().empty() && std::chrono::steady_clock::now() < end)
    {
        loader.loader.Tick(3);
        manager.Update(0.0f, 0.016f);
    }
    EXPECT_EQ(Calls(), "town;");
    manager.Update(0.0f, 0.016f);
    EXPECT_EQ(Calls(), "town;");
    EXPECT_EQ(pScene->GetEntityCount(), 3);
    // A load that fails calls nothing.
    ASSERT_NE(manager.LoadScene("nowhere", temp.Path(), true), nullptr);
    for (int i = 0; i < 50 && manager.FindScene("nowhere")->IsLoading(); ++i)
    {
        loader.loader.WaitForAll();
        manager.Update(0.0f, 0.016f);
    }
    manager.Update(0.0f, 0.016f);
    EXPECT_EQ(Calls(), "town;");
}
