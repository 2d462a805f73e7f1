// The class descriptions of the scene-entity reflection. Each entity kind has one static
// description (name, parent name, type code, factory, record description); the registry
// lists them all, and its link step, run once at start-up, joins every description to its
// parent by name. The root is "CBaseClass".
#pragma once

#include "scene/SceneRecordIO.h"

#include <cstdint>

namespace Ovrel
{

class CSceneContent;
class CSceneEntity;

struct CSceneClassDesc
{
    const char* pcName;       // the class name without namespace, e.g. "CLightSceneEntity"
    const char* pcParentName; // null for the root only
    uint32_t uType;           // the type code; 0 for classes that make no entity
    // A new entity of the class, or null for abstract classes.
    CSceneEntity* (*pfnCreate)(CSceneContent* pScene);
    // The record through CSceneRecordIO (the kind's TransferRecord).
    bool (*pfnTransfer)(CSceneEntity& entity, CSceneRecordIO& io);
    // Filled by the link step.
    const CSceneClassDesc* pParent;
};

class CSceneClassRegistry
{
public:
    // Joins every description to its parent by name. False (and a log line) when a parent
    // name is unknown; running it again is harmless.
    static bool Link();
    static bool IsLinked();
    // Every description, root first.
    static int32_t GetCount();
    static const CSceneClassDesc& Get(int32_t iIndex);
    // Null when no description has that name or code.
    static const CSceneClassDesc* FindByName(const char* pcName);
    static const CSceneClassDesc* FindByType(uint32_t uType);
    // True when pDesc is the class named pcName or derives from it (after Link).
    static bool IsKindOf(const CSceneClassDesc* pDesc, const char* pcName);

    // A new entity of the type code through its description; null for an unknown code.
    static CSceneEntity* Create(uint32_t uType, CSceneContent* pScene);
    // Reports the entity's record to the visitor, field by field; false for an unknown kind.
    static bool Describe(CSceneEntity& entity, ISceneFieldVisitor& visitor);
};

} // namespace Ovrel
