// The physics seam the scene's entities use: actors built from `.col` collision shapes, cloth,
// and ray casts against shapes by collision flags. The SDK behind it comes later; until then
// (and wherever the SDK is absent) CNullPhysicsWorld answers: no actor, no cloth, no hit.
//
// Ownership: an object made by a world belongs to its caller until Delete(), which removes
// it from the world and destroys it.
#pragma once

#include "engine/utility/Math.h"

#include <cstdint>
#include <string>

namespace Kestrin::Physics
{

using Kestrin::Utility::CMatrix44;
using Kestrin::Utility::CVec3;

// Collision flags of one shape record; a ray cast names the flags it collides with.
enum : uint32_t
{
    SHAPE_CHARACTER = 0x1,
    SHAPE_CAMERA = 0x2,
    SHAPE_FX = 0x4,
    SHAPE_LIGHT = 0x8,
    SHAPE_IK = 0x10,
    SHAPE_WALKABLE = 0x20,
    SHAPE_WATER = 0x40,
    SHAPE_NPC = 0x80,
    SHAPE_ATTACK = 0x100,
};

// The actor of one entity, with one SDK shape per shape of its collision file.
class CPhysicsObject
{
public:
    CPhysicsObject(const CPhysicsObject&) = delete;
    CPhysicsObject& operator=(const CPhysicsObject&) = delete;

    // The pose without scale (orthonormal axes) and the scale apart.
    virtual void SetPose(const CMatrix44& mPose) = 0;
    virtual void SetScale(const CVec3& vScale) = 0;
    // An inactive actor takes no part in collision.
    virtual void SetActive(bool bActive) = 0;
    // How many shapes the actor holds.
    virtual int32_t GetShapeCount() const = 0;
    // Collision flags and material of shape iIndex; false when iIndex is out of range.
    virtual bool SetShapeAttribute(int32_t iIndex, uint32_t uFlags, uint16_t uMaterial) = 0;
    // Removes the actor from its world and destroys this object.
    virtual void Delete() = 0;

protected:
    CPhysicsObject() = default;
    virtual ~CPhysicsObject() = default;
};

// The values a cloth simulates with.
struct CClothParameters
{
    float fBending = 0.0f;
    float fStretching = 1.0f;
    float fFriction = 0.0f;
    float fThickness = 1.0f;
    CVec3 vWind;
    float fDamping = 0.0001f;
};

class CClothObject
{
public:
    CClothObject(const CClothObject&) = delete;
    CClothObject& operator=(const CClothObject&) = delete;

    virtual void SetPose(const CMatrix44& mWorld) = 0;
    virtual void SetParameters(const CClothParameters& parameters) = 0;
    // Advances the simulation by fDelta seconds.
    virtual void Update(float fDelta) = 0;
    // Removes the cloth from its world and destroys this object.
    virtual void Delete() = 0;

protected:
    CClothObject() = default;
    virtual ~CClothObject() = default;
};

struct CRayHit
{
    float fDistance = 0.0f;
    CVec3 vPosition;
    CVec3 vNormal;
};

// The physics service: initialised once at start-up; every world is made with it.
class CPhysicsSdk
{
public:
    virtual ~CPhysicsSdk() = default;
    CPhysicsSdk(const CPhysicsSdk&) = delete;
    CPhysicsSdk& operator=(const CPhysicsSdk&) = delete;

    // False when the service is not installed; the application then stops with
    // "Please install PhysX.".
    virtual bool Initialize() = 0;
    virtual void Shutdown() = 0;

protected:
    CPhysicsSdk() = default;
};

// The SDK of a system without physics: it starts, and its worlds are null worlds.
class CNullPhysicsSdk final : public CPhysicsSdk
{
public:
    CNullPhysicsSdk() = default;

    bool Initialize() override { return true; }
    void Shutdown() override {}
};

class CPhysicsWorld
{
public:
    virtual ~CPhysicsWorld() = default;
    CPhysicsWorld(const CPhysicsWorld&) = delete;
    CPhysicsWorld& operator=(const CPhysicsWorld&) = delete;

    // Makes the world's scene in the SDK. False when the SDK is missing or can't make one.
    virtual bool Initialize(CPhysicsSdk* pSdk) = 0;
    // Starts the simulation of one step (seconds); Fetch waits for its results. A world may
    // be stepped again without a fetch: the second world of the application is.
    virtual void Step(float fTimeStep) = 0;
    virtual void Fetch() = 0;

    // Loads the collision shape file (a data path, `.col`) and builds an actor in this world.
    // Null when the shape cannot be had.
    virtual CPhysicsObject* CreateObject(const std::string& strShapeFile, bool bAsync) = 0;
    // Builds the shape from the Collada source of a mesh (its `--col` nodes) and an actor
    // from it. Null when the source has no collision nodes or cannot be read.
    virtual CPhysicsObject* CreateObjectFromMesh(const std::string& strMeshFile) = 0;
    // A cloth simulated from the mesh file. Null when none can be made.
    virtual CClothObject* CreateCloth(const std::string& strMeshFile) = 0;
    // The first hit of the ray among shapes whose flags meet uMask; false when none.
    virtual bool RayCast(const CVec3& vStart, const CVec3& vDirection, CRayHit& hit, uint32_t uMask) = 0;

protected:
    CPhysicsWorld() = default;
};

// The world of a system without a physics SDK: it builds nothing and no ray hits.
class CNullPhysicsWorld final : public CPhysicsWorld
{
public:
    CNullPhysicsWorld() = default;

    bool Initialize(CPhysicsSdk* pSdk) override { return pSdk != nullptr; }
    void Step(float fTimeStep) override { m_fTime += fTimeStep; }
    void Fetch() override {}
    float GetSimulatedTime() const { return m_fTime; }

    CPhysicsObject* CreateObject(const std::string&, bool) override { return nullptr; }
    CPhysicsObject* CreateObjectFromMesh(const std::string&) override { return nullptr; }
    CClothObject* CreateCloth(const std::string&) override { return nullptr; }
    bool RayCast(const CVec3&, const CVec3&, CRayHit&, uint32_t) override { return false; }

private:
    float m_fTime = 0.0f;
};

} // namespace Kestrin::Physics
