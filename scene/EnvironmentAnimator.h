// Ovrel::CEnvironmentAnimator: named environment animations, read from
// "EnvironmentAnimation.lua" (calls `EnvironmentAnimation(name, startTime, endTime, target)`)
// and started by name (`ActiveEnvAnim(name)` on the console). A running animation blends
// what the scene's environment shows toward the values of the target environment, an
// environment entity of the same scene named by `target`, from startTime to endTime seconds
// after it started; afterwards the target's values stay shown until another animation
// starts or Stop is called.
//
// The blend, per field: numbers, vectors and the curve tables go linearly; switches, kinds,
// channels and the curve file name take the target's value at the halfway point.
//
// Threads: main thread only, like the scene.
#pragma once

#include "scene/SceneEnvironmentEntity.h"

#include <cstdint>
#include <string>
#include <vector>

struct lua_State;

namespace Ovrel
{

class CScene;

// The field-by-field blend of two environments at t (0 gives a, 1 gives b).
CEnvironmentValues BlendEnvironment(const CEnvironmentValues& a, const CEnvironmentValues& b, float t);

class CEnvironmentAnimator
{
public:
    struct CAnimation
    {
        std::string strName;
        float fStartTime = 0.0f;
        float fEndTime = 0.0f;
        std::string strTarget;
    };

    // Animates the environment of pScene (not owned), which may be destroyed first.
    explicit CEnvironmentAnimator(CScene* pScene);
    // Touches no scene.
    virtual ~CEnvironmentAnimator();
    CEnvironmentAnimator(const CEnvironmentAnimator&) = delete;
    CEnvironmentAnimator& operator=(const CEnvironmentAnimator&) = delete;

    // Adds an animation. Logs "EnvironmentAnimation error ! EndTime should bigger than
    // StartTime ." or "EnvironmentAnimation error ! name exist. <name>" and returns false when
    // the times are not in order or the name is taken.
    bool Add(const std::string& strName, float fStartTime, float fEndTime, const std::string& strTarget);
    // Runs the script file, whose `EnvironmentAnimation` calls add animations (a call with
    // other than four arguments logs "EnvironmentAnimation error ! need 4 arguments." and adds
    // nothing). False when the file does not run; what it added before stays.
    bool Load(const char* pcPath);
    // Starts the named animation from what the environment shows now. False (and nothing
    // changes) when the name is unknown, the scene has no environment, or the target is no
    // environment of the scene.
    bool Activate(const std::string& strName);
    // Activate, reporting a failure on the console as `ActiveEnvAnim env: "%s" not founded.`
    bool ActiveEnvAnim(const std::string& strName);
    // Advances the running animation.
    void Update(float fDelta);
    // Ends the running animation; the environment shows its own values again.
    void Stop();
    bool IsRunning() const { return m_bRunning; }
    const std::vector<CAnimation>& GetAnimations() const { return m_animations; }
    // Forgets every animation (and stops the running one).
    void Clear();

    // The script functions: `EnvironmentAnimation` (for the file) and `ActiveEnvAnim` (for
    // the console), bound to this animator, registered in a Lua state. A call of
    // `ActiveEnvAnim` with no argument raises the Lua error "ActiveEnvAnim error ! need 1
    // arguments.".
    void RegisterFunctions(lua_State* pState);

private:
    static int LuaEnvironmentAnimation(lua_State* pState);
    static int LuaActiveEnvAnim(lua_State* pState);
    // The scene's environment and the running animation's target; null when gone.
    CEnvironmentSceneEntity* FindEnvironment(int32_t iId) const;

    CScene* m_pScene;
    std::vector<CAnimation> m_animations;
    bool m_bRunning = false;
    size_t m_iRunning = 0;
    float m_fElapsed = 0.0f;
    // By id, so that an entity deleted meanwhile ends the animation instead of being touched.
    int32_t m_iEnvironmentId = 0;
    int32_t m_iTargetId = 0;
    CEnvironmentValues m_from;
};

} // namespace Ovrel
