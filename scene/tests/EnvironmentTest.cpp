// The environment: its values on the renderer's settings, its curve files, and the named
// animations that blend one environment toward another.
#include "scene/EnvironmentAnimator.h"
#include "scene/Scene.h"
#include "scene/SceneEnvironmentEntity.h"
#include "scene/tests/SceneTestUtil.h"

#include "Utils/Utility/GUtDebug.h"
#include "engine/renderer/RendererSettings.h"
#include "engine/utility/SystemOutput.h"
#include "script/LuaScript.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace Ovrel;
using namespace SceneTest;
using Kestrin::Renderer::CRecordingRendererSettings;
using Kestrin::Renderer::CRenderEnvironment;

namespace
{
// Log lines and message boxes, as the log's first hook sees them.
class CMessages
{
public:
    CMessages()
    {
        GUtLog::Get().SetPreHook([this](bool bBox, int, const char*, const char*, const char* pcText)
                                 { (bBox ? boxes : lines).push_back(pcText); });
    }
    ~CMessages() { GUtLog::Get().SetPreHook(nullptr); }
    std::vector<std::string> lines;
    std::vector<std::string> boxes;
};

// What goes to the console.
class CConsole final : public Kestrin::Utility::ISystemOutput
{
public:
    CConsole() { Kestrin::Utility::SetSystemOutput(this); }
    ~CConsole() override { Kestrin::Utility::SetSystemOutput(nullptr); }
    void Print(int, const char* pcText) override { text += pcText; }
    std::string text;
};

// An uncompressed 24-bit TGA, pixels given as red, green, blue.
std::vector<uint8_t> Tga(uint16_t uWidth, uint16_t uHeight, const std::vector<uint8_t>& rgb)
{
    std::vector<uint8_t> bytes = {0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    bytes.push_back(static_cast<uint8_t>(uWidth & 0xFF));
    bytes.push_back(static_cast<uint8_t>(uWidth >> 8));
    bytes.push_back(static_cast<uint8_t>(uHeight & 0xFF));
    bytes.push_back(static_cast<uint8_t>(uHeight >> 8));
    bytes.push_back(24);
    bytes.push_back(0x20);
    for (size_t i = 0; i + 2 < rgb.size(); i += 3)
    {
        bytes.push_back(rgb[i + 2]);
        bytes.push_back(rgb[i + 1]);
        bytes.push_back(rgb[i]);
    }
    return bytes;
}

// 256 triples: red i, green 255 - i, blue i / 2.
std::vector<uint8_t> Ramp()
{
    std::vector<uint8_t> rgb;
    for (int i = 0; i < 256; ++i)
    {
        rgb.push_back(static_cast<uint8_t>(i));
        rgb.push_back(static_cast<uint8_t>(255 - i));
        rgb.push_back(static_cast<uint8_t>(i / 2));
    }
    return rgb;
}

void ExpectRampCurve(const CEnvironmentValues& values)
{
    for (int i = 0; i < 256; ++i)
    {
        ASSERT_EQ(values.acCurve[i], i) << i;
        ASSERT_EQ(values.acCurve[256 + i], 255 - i) << i;
        ASSERT_EQ(values.acCurve[512 + i], i / 2) << i;
    }
}

CEnvironmentSceneEntity* Environment(CScene& scene, const char* pcName)
{
    return static_cast<CEnvironmentSceneEntity*>(scene.CreateEnvironment(pcName));
}
} // namespace

TEST(Environment, TheEnvironmentInForcePushesItsValuesToTheRenderer)
{
    CScene scene;
    scene.SetServices(nullptr, nullptr, nullptr, nullptr, nullptr, true);
    CRecordingRendererSettings settings;
    EXPECT_FALSE(scene.ApplyEnvironment(settings));
    EXPECT_EQ(settings.GetCalls(), 0);
    CEnvironmentSceneEntity* pEnvironment = Environment(scene, "Day");
    CEnvironmentValues values = pEnvironment->GetValues();
    values.vChar1 = {0.1f, 0.2f, 0.3f};
    values.vFx2 = {0.7f, 0.8f, 0.9f};
    values.iLightMapChannel = 2;
    values.uFogOn = 1;
    values.fFogEnd = 4000.0f;
    values.fFogAlpha2 = 0.5f;
    values.uToneMappingOn = 1;
    values.fBurnOutRatio = 3.0f;
    values.fSkyPower = 2.0f;
    values.uCurveOn = 1;
    values.acCurve[256 + 7] = 99;
    values.vScaleOffset = {2.0f, 0.5f, 1.5f, 0.25f};
    values.iFlareKind = 3;
    values.fWaterD = -12.0f;
    pEnvironment->SetValues(values);
    ASSERT_TRUE(scene.ApplyEnvironment(settings));
    const CRenderEnvironment& r = settings.GetLast();
    EXPECT_EQ(r.avAmbient[Kestrin::Renderer::AMBIENT_MESH][0], (CVec3{0.3f, 0.3f, 0.3f}));
    EXPECT_EQ(r.avAmbient[Kestrin::Renderer::AMBIENT_MESH][1], (CVec3{0.05f, 0.05f, 0.05f}));
    EXPECT_EQ(r.avAmbient[Kestrin::Renderer::AMBIENT_CHARACTER][0], (CVec3{0.1f, 0.2f, 0.3f}));
    EXPECT_EQ(r.avAmbient[Kestrin::Renderer::AMBIENT_FX][1], (CVec3{0.7f, 0.8f, 0.9f}));
    EXPECT_EQ(r.iAmbientLightMapChannel, 2);
    EXPECT_TRUE(r.fog.bOn);
    EXPECT_EQ(r.fog.fEnd, 4000.0f);
    EXPECT_EQ(r.fog.fAlpha2, 0.5f);
    EXPECT_FALSE(r.dof.bOn);
    EXPECT_TRUE(r.toneMapping.bOn);
    EXPECT_EQ(r.toneMapping.fBurnOutRatio, 3.0f);
    EXPECT_EQ(r.fSkyPower, 2.0f);
    EXPECT_TRUE(r.bGammaCurve);
    EXPECT_EQ(r.acCurve[1][7], 99);
    EXPECT_EQ(r.acCurve[0][7], 7);
    EXPECT_EQ(r.vEffectLumAdjust, (CVec4{2.0f, 0.5f, 1.5f, 0.25f}));
    EXPECT_EQ(r.lenseFlare.iKind, 3);
    EXPECT_EQ(r.fWaterDistance, -12.0f);
    // Each call pushes everything again.
    scene.ApplyEnvironment(settings);
    EXPECT_EQ(settings.GetCalls(), 2);
}

TEST(Environment, ARawCurveIs768BytesOfTriples)
{
    CTempFolder temp;
    WriteBytes(temp / "ramp.raw", Ramp());
    CScene scene;
    CEnvironmentSceneEntity* pEnvironment = Environment(scene, "Day");
    ASSERT_TRUE(pEnvironment->LoadCurveFile(temp / "ramp.raw"));
    ExpectRampCurve(pEnvironment->GetValues());
    EXPECT_EQ(pEnvironment->GetValues().strCurveFile, temp / "ramp.raw");

    std::vector<uint8_t> shortRaw = Ramp();
    shortRaw.pop_back();
    WriteBytes(temp / "short.RAW", shortRaw);
    CMessages messages;
    EXPECT_FALSE(pEnvironment->LoadCurveFile(temp / "short.RAW"));
    ASSERT_EQ(messages.boxes.size(), 1u);
    EXPECT_EQ(messages.boxes[0], "A .raw curve file holds 768 bytes: 256 red, green, blue triples.");
    EXPECT_FALSE(pEnvironment->LoadCurveFile(temp / "missing.raw"));
    EXPECT_EQ(messages.boxes.back(), "The curve file cannot be read.");
    ExpectRampCurve(pEnvironment->GetValues());
    EXPECT_EQ(pEnvironment->GetValues().strCurveFile, temp / "ramp.raw");
}

TEST(Environment, AnImageCurveMustBe256By1)
{
    CTempFolder temp;
    WriteBytes(temp / "ramp.tga", Tga(256, 1, Ramp()));
    CScene scene;
    CEnvironmentSceneEntity* pEnvironment = Environment(scene, "Day");
    ASSERT_TRUE(pEnvironment->LoadCurveFile(temp / "ramp.tga"));
    ExpectRampCurve(pEnvironment->GetValues());
    EXPECT_EQ(pEnvironment->GetValues().strCurveFile, temp / "ramp.tga");

    std::vector<uint8_t> ramp = Ramp();
    std::vector<uint8_t> half(ramp.begin(), ramp.begin() + 384);
    WriteBytes(temp / "narrow.tga", Tga(128, 1, half));
    std::vector<uint8_t> two = Ramp();
    two.insert(two.end(), two.begin(), two.end());
    WriteBytes(temp / "tall.tga", Tga(256, 2, two));
    WriteText(temp / "text.tga", "not an image at all");
    CMessages messages;
    EXPECT_FALSE(pEnvironment->LoadCurveFile(temp / "narrow.tga"));
    EXPECT_FALSE(pEnvironment->LoadCurveFile(temp / "tall.tga"));
    EXPECT_FALSE(pEnvironment->LoadCurveFile(temp / "text.tga"));
    EXPECT_EQ(messages.boxes,
              (std::vector<std::string>{"Width 256 pixels, height 1 pixel image file is required.",
                                        "Width 256 pixels, height 1 pixel image file is required.",
                                        "The curve file is no image that can be read."}));
    ExpectRampCurve(pEnvironment->GetValues());
    EXPECT_EQ(pEnvironment->GetValues().strCurveFile, temp / "ramp.tga");
}

TEST(Environment, TheBlendMixesNumbersAndSwitchesKindsHalfway)
{
    CEnvironmentValues a, b;
    a.vMesh1 = {0, 0, 0};
    b.vMesh1 = {1, 2, 4};
    a.fFogEnd = 1000.0f;
    b.fFogEnd = 2000.0f;
    a.uFogOn = 0;
    b.uFogOn = 1;
    a.iFlareKind = 1;
    b.iFlareKind = 5;
    a.strCurveFile = "a.raw";
    b.strCurveFile = "b.raw";
    a.acCurve[10] = 0;
    b.acCurve[10] = 255;
    CEnvironmentValues q = BlendEnvironment(a, b, 0.25f);
    EXPECT_EQ(q.vMesh1, (CVec3{0.25f, 0.5f, 1.0f}));
    EXPECT_EQ(q.fFogEnd, 1250.0f);
    EXPECT_EQ(q.uFogOn, 0);
    EXPECT_EQ(q.iFlareKind, 1);
    EXPECT_EQ(q.strCurveFile, "a.raw");
    EXPECT_EQ(q.acCurve[10], 64);
    CEnvironmentValues h = BlendEnvironment(a, b, 0.5f);
    EXPECT_EQ(h.uFogOn, 1);
    EXPECT_EQ(h.iFlareKind, 5);
    EXPECT_EQ(h.strCurveFile, "b.raw");
    CEnvironmentValues e = BlendEnvironment(a, b, 1.0f);
    EXPECT_EQ(e.vMesh1, b.vMesh1);
    EXPECT_EQ(e.acCurve[10], 255);
}

TEST(Environment, AnimationsCheckTheirTimesAndNames)
{
    CScene scene;
    CEnvironmentAnimator animator(&scene);
    CMessages messages;
    EXPECT_TRUE(animator.Add("Dusk", 0.0f, 10.0f, "Night"));
    EXPECT_FALSE(animator.Add("Dawn", 5.0f, 5.0f, "Day"));
    EXPECT_FALSE(animator.Add("Dawn", 6.0f, 5.0f, "Day"));
    EXPECT_FALSE(animator.Add("Dusk", 1.0f, 2.0f, "Day"));
    EXPECT_EQ(messages.lines,
              (std::vector<std::string>{"EnvironmentAnimation error ! EndTime should bigger than StartTime .",
                                        "EnvironmentAnimation error ! EndTime should bigger than StartTime .",
                                        "EnvironmentAnimation error ! name exist. Dusk"}));
    ASSERT_EQ(animator.GetAnimations().size(), 1u);
    EXPECT_EQ(animator.GetAnimations()[0].strTarget, "Night");
}

TEST(Environment, AnActiveAnimationBlendsTowardItsTargetAndHoldsIt)
{
    CScene scene;
    scene.SetServices(nullptr, nullptr, nullptr, nullptr, nullptr, true);
    CEnvironmentSceneEntity* pDay = Environment(scene, "Day");
    CEnvironmentSceneEntity* pNight = Environment(scene, "Night");
    CEnvironmentValues night = pNight->GetValues();
    night.fSaturation = 0.0f;
    night.uBloomOn = 1;
    pNight->SetValues(night);
    CEnvironmentAnimator animator(&scene);
    ASSERT_TRUE(animator.Add("Dusk", 2.0f, 6.0f, "night"));
    ASSERT_TRUE(animator.Add("Lost", 0.0f, 1.0f, "Nowhere"));
    {
        CConsole console;
        EXPECT_FALSE(animator.ActiveEnvAnim("Unknown"));
        EXPECT_FALSE(animator.ActiveEnvAnim("Lost"));
        EXPECT_EQ(console.text, "ActiveEnvAnim env: \"Unknown\" not founded.\n"
                                "ActiveEnvAnim env: \"Lost\" not founded.\n");
    }
    EXPECT_FALSE(animator.IsRunning());
    ASSERT_TRUE(animator.Activate("Dusk"));
    CRecordingRendererSettings settings;
    auto Saturation = [&]
    {
        scene.ApplyEnvironment(settings);
        return settings.GetLast().fSaturation;
    };
    animator.Update(1.0f);
    EXPECT_FLOAT_EQ(Saturation(), 1.0f);
    animator.Update(2.0f); // 3 s: a quarter of the way
    EXPECT_FLOAT_EQ(Saturation(), 0.75f);
    EXPECT_FALSE(settings.GetLast().bloom.bOn);
    animator.Update(2.0f); // 5 s: three quarters
    EXPECT_FLOAT_EQ(Saturation(), 0.25f);
    EXPECT_TRUE(settings.GetLast().bloom.bOn);
    animator.Update(5.0f);
    EXPECT_FLOAT_EQ(Saturation(), 0.0f);
    EXPECT_FALSE(animator.IsRunning());
    // The environment's own values never changed; the blend is shown in their place.
    EXPECT_FLOAT_EQ(pDay->GetValues().fSaturation, 1.0f);
    animator.Update(1.0f);
    EXPECT_FLOAT_EQ(Saturation(), 0.0f);
    animator.Stop();
    EXPECT_FLOAT_EQ(Saturation(), 1.0f);
    EXPECT_EQ(pDay->GetBlend(), nullptr);
}

TEST(Environment, AnAnimationWhoseEnvironmentGoesAwayEnds)
{
    CScene scene;
    scene.SetServices(nullptr, nullptr, nullptr, nullptr, nullptr, true);
    Environment(scene, "Day");
    CEnvironmentSceneEntity* pNight = Environment(scene, "Night");
    CEnvironmentAnimator animator(&scene);
    ASSERT_TRUE(animator.Add("Dusk", 0.0f, 1.0f, "Night"));
    ASSERT_TRUE(animator.Activate("Dusk"));
    scene.RemoveEntity(pNight);
    animator.Update(0.5f);
    EXPECT_FALSE(animator.IsRunning());
    scene.Clear();
    animator.Stop();
    EXPECT_FALSE(animator.Activate("Dusk"));
    animator.Clear();
    EXPECT_TRUE(animator.GetAnimations().empty());
}

namespace
{
std::vector<std::string> g_luaErrors;
void KeepLuaError(GLib::Script::CLuaScript*, int, const char* pcText)
{
    g_luaErrors.push_back(pcText);
}
} // namespace

TEST(Environment, TheAnimationFileReportsEachBadCallAndKeepsTheGoodOnes)
{
    CTempFolder temp;
    WriteText(temp / "EnvironmentAnimation.lua", "EnvironmentAnimation(\"Dusk\", 0, 10, \"Night\")\n"
                                                 "EnvironmentAnimation(\"Short\", 1, 2)\n"
                                                 "EnvironmentAnimation(\"Long\", 1, 2, \"Day\", 5)\n"
                                                 "EnvironmentAnimation(\"Back\", 5, 5, \"Day\")\n"
                                                 "EnvironmentAnimation(\"Dusk\", 1, 2, \"Day\")\n"
                                                 "EnvironmentAnimation(\"Dawn\", 0.5, 3.5, \"Day\")\n");
    CScene scene;
    CEnvironmentAnimator animator(&scene);
    CMessages messages;
    ASSERT_TRUE(animator.Load((temp / "EnvironmentAnimation.lua").c_str()));
    EXPECT_EQ(messages.lines,
              (std::vector<std::string>{"EnvironmentAnimation error ! need 4 arguments.",
                                        "EnvironmentAnimation error ! need 4 arguments.",
                                        "EnvironmentAnimation error ! EndTime should bigger than StartTime .",
                                        "EnvironmentAnimation error ! name exist. Dusk"}));
    ASSERT_EQ(animator.GetAnimations().size(), 2u);
    EXPECT_EQ(animator.GetAnimations()[1].strName, "Dawn");
    EXPECT_FLOAT_EQ(animator.GetAnimations()[1].fStartTime, 0.5f);
    EXPECT_FLOAT_EQ(animator.GetAnimations()[1].fEndTime, 3.5f);
    EXPECT_EQ(animator.GetAnimations()[1].strTarget, "Day");
    EXPECT_FALSE(animator.Load((temp / "missing.lua").c_str()));
    EXPECT_EQ(animator.GetAnimations().size(), 2u);
}

TEST(Environment, ActiveEnvAnimFromAScript)
{
    CScene scene;
    scene.SetServices(nullptr, nullptr, nullptr, nullptr, nullptr, true);
    Environment(scene, "Day");
    Environment(scene, "Night");
    CEnvironmentAnimator animator(&scene);
    ASSERT_TRUE(animator.Add("Dusk", 0.0f, 1.0f, "Night"));
    GLib::Script::CLuaScript script;
    animator.RegisterFunctions(script.GetState());
    script.SetErrorHook(&KeepLuaError);
    g_luaErrors.clear();
    CConsole console;
    EXPECT_FALSE(script.RunString("ActiveEnvAnim()"));
    EXPECT_FALSE(script.RunString("ActiveEnvAnim('Dusk', 2)"));
    // Lua puts where the call stood in front: "[string "..."]:1: ".
    ASSERT_EQ(g_luaErrors.size(), 2u);
    for (const std::string& strError : g_luaErrors)
    {
        EXPECT_TRUE(strError.ends_with("]:1: ActiveEnvAnim error ! need 1 arguments.")) << strError;
    }
    EXPECT_TRUE(script.RunString("ActiveEnvAnim('Dawn')"));
    EXPECT_EQ(console.text, "ActiveEnvAnim env: \"Dawn\" not founded.\n");
    EXPECT_FALSE(animator.IsRunning());
    EXPECT_TRUE(script.RunString("ActiveEnvAnim('Dusk')"));
    EXPECT_TRUE(animator.IsRunning());
    EXPECT_TRUE(script.RunString("EnvironmentAnimation('Dawn', 0, 1, 'Day')"));
    EXPECT_EQ(animator.GetAnimations().size(), 2u);
}
