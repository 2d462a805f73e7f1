// The `.scene` reader: header, atlas tables and the entity loop, into a staging area that
// replaces the content only when the whole file read well.
#include "scene/SceneClassDesc.h"
#include "scene/SceneContent.h"
#include "scene/SceneDiskFile.h"
#include "scene/SceneEnvironmentEntity.h"
#include "scene/SceneGroupEntity.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <unordered_map>

namespace Ovrel
{

struct CSceneContent::CParse
{
    bool bImport = false;
    bool bAsync = false;
    CSceneReadError* pError = nullptr;
    int32_t iVersion = 0;
    CBox3 box;
    CAtlasTable lightMaps;
    CAtlasTable colorLightMaps;
    std::vector<CSceneEntity*> entities; // owned until committed
    std::vector<CSceneEntity*> activate;
    std::vector<CSceneEntity*> pending;
    int32_t iNextId = 0;
    CEnvironmentSceneEntity* pEnvironment = nullptr;
    std::unordered_map<int32_t, int32_t> importIds; // file id to fresh id

    bool Fail(int32_t iIndex, uint32_t uType, const char* pcFormat, ...)
        __attribute__((format(printf, 4, 5)));
    // Destroys what was read.
    void Discard(Kestrin::Renderer::CTextureManager* pTextures);
};

bool CSceneContent::CParse::Fail(int32_t iIndex, uint32_t uType, const char* pcFormat, ...)
{
    if (pError)
    {
        char acText[256];
        va_list args;
        va_start(args, pcFormat);
        vsnprintf(acText, sizeof(acText), pcFormat, args);
        va_end(args);
        pError->iEntityIndex = iIndex;
        pError->uType = uType;
        pError->strText = acText;
    }
    return false;
}

void CSceneContent::CParse::Discard(Kestrin::Renderer::CTextureManager* pTextures)
{
    for (CSceneEntity* pEntity : entities)
    {
        delete pEntity;
    }
    entities.clear();
    lightMaps.Release(pTextures);
    colorLightMaps.Release(pTextures);
}

bool CSceneContent::ParseHeader(CIOStream& stream, CParse& parse) const
{
    if (!stream.CheckMagic(TAG_SCENE))
    {
        return parse.Fail(-1, 0, "not a scene file: the magic is not SCEN in either byte order");
    }
    if (!stream.ReadI32(parse.iVersion))
    {
        return parse.Fail(-1, 0, "the file ends in the header");
    }
    if (parse.iVersion > SCENE_FILE_VERSION)
    {
        return parse.Fail(-1, 0, "file version %d is newer than this reader's %d", parse.iVersion,
                          SCENE_FILE_VERSION);
    }
    if (!stream.ReadVec3(parse.box.vMin) || !stream.ReadVec3(parse.box.vMax))
    {
        return parse.Fail(-1, 0, "the file ends in the header");
    }
    // The import reader skips the tables: lightmaps belong to the scene imported into.
    Kestrin::Renderer::CTextureManager* pTextures = parse.bImport ? nullptr : m_pTextures;
    CSceneRecordIO io(stream, true);
    if (parse.iVersion >= 101 && !parse.lightMaps.Read(io, pTextures, false, parse.bAsync))
    {
        return parse.Fail(-1, 0, "the lightmap table is cut short or has a negative count");
    }
    if (parse.iVersion >= 102 && !parse.colorLightMaps.Read(io, pTextures, true, parse.bAsync))
    {
        return parse.Fail(-1, 0, "the colour lightmap table is cut short or has a negative count");
    }
    return true;
}

bool CSceneContent::ParseEntities(CIOStream& stream, CParse& parse) const
{
    int32_t iCount = 0;
    if (!stream.ReadI32(iCount) || iCount < 0)
    {
        return parse.Fail(-1, 0, "the entity count is missing or negative");
    }
    CSceneContent* pSelf = const_cast<CSceneContent*>(this);
    for (int32_t i = 0; i < iCount; ++i)
    {
        uint32_t uType = 0;
        if (!stream.ReadU32(uType))
        {
            return parse.Fail(i, 0, "the file ends before entity %d of %d", i, iCount);
        }
        CSceneEntity* pEntity = CSceneClassRegistry::Create(uType, pSelf);
        if (!pEntity)
        {
            return parse.Fail(i, uType, "entity %d has the unknown type code 0x%x", i, uType);
        }
        // As CreateEntity(type, 0) would: the entity takes an id before its record names one.
        parse.iNextId = std::max(FollowingEntityId(parse.iNextId), 1);
        int32_t iFreshId = parse.iNextId;
        pEntity->SetId(iFreshId);
        parse.entities.push_back(pEntity);
        if (!pEntity->Load(stream, parse.bAsync))
        {
            return parse.Fail(i, uType,
                              "entity %d (type 0x%x) cannot be read: cut short, wrong tag or newer version",
                              i, uType);
        }
        if (parse.bImport)
        {
            parse.importIds.emplace(pEntity->GetId(), iFreshId);
            pEntity->SetId(iFreshId);
            pEntity->SetGroupId(0);
        }
        else if (parse.iNextId <= pEntity->GetId())
        {
            parse.iNextId = FollowingEntityId(pEntity->GetId());
        }
        if (uType == ENTITY_ENVIRONMENT && !parse.bImport)
        {
            CEnvironmentSceneEntity* pEnvironment = static_cast<CEnvironmentSceneEntity*>(pEntity);
            // A "_VTL" twin of the environment takes over in the game's view of the scene.
            if (!parse.pEnvironment || (!m_bHeadless && !m_bEditorMode &&
                                        pEnvironment->GetName() == parse.pEnvironment->GetName() + "_VTL"))
            {
                parse.pEnvironment = pEnvironment;
            }
        }
        (m_bHoldActivation || pEntity->IsLoading() ? parse.pending : parse.activate).push_back(pEntity);
    }
    return true;
}

void CSceneContent::Commit(CParse& parse)
{
    bool bNeedsResave = m_bNeedsResave;
    Clear();
    m_bNeedsResave = bNeedsResave;
    m_entities = std::move(parse.entities);
    parse.entities.clear();
    for (CSceneEntity* pEntity : m_entities)
    {
        if (IsUpdated(pEntity->GetType()))
        {
            m_updateList.push_back(pEntity);
        }
    }
    m_pending = std::move(parse.pending);
    m_lightMaps = std::move(parse.lightMaps);
    m_colorLightMaps = std::move(parse.colorLightMaps);
    m_boxBounds = parse.box;
    m_iNextEntityId = parse.iNextId;
    m_pEnvironment = parse.pEnvironment;
    m_iFileVersion = parse.iVersion;
    m_bIndexDirty = true;
    for (CSceneEntity* pEntity : parse.activate)
    {
        pEntity->OnLoaded();
    }
}

bool CSceneContent::Read(CIOStream& stream, CSceneReadError* pError, bool bAsync)
{
    CParse parse;
    parse.pError = pError;
    parse.bAsync = bAsync;
    bool bNeedsResave = m_bNeedsResave;
    m_bNeedsResave = false;
    if (!ParseHeader(stream, parse) || !ParseEntities(stream, parse))
    {
        parse.Discard(m_pTextures);
        m_bNeedsResave = bNeedsResave;
        m_bIndexDirty = true;
        return false;
    }
    Commit(parse);
    m_bSwapBytes = stream.m_bSwapBytes;
    return true;
}

bool CSceneContent::ReadImport(CIOStream& stream, std::vector<CSceneEntity*>& imported,
                               CSceneReadError* pError)
{
    CParse parse;
    parse.bImport = true;
    parse.pError = pError;
    parse.iNextId = m_iNextEntityId;
    if (!ParseHeader(stream, parse) || !ParseEntities(stream, parse))
    {
        parse.Discard(nullptr);
        m_bIndexDirty = true;
        return false;
    }
    parse.lightMaps.Release(nullptr);
    parse.colorLightMaps.Release(nullptr);
    // Groups of the file keep their members through the fresh ids; members of no imported
    // entity are dropped.
    for (CSceneEntity* pEntity : parse.entities)
    {
        if (pEntity->GetType() != ENTITY_GROUP)
        {
            continue;
        }
        CGroupSceneEntity* pGroup = static_cast<CGroupSceneEntity*>(pEntity);
        std::vector<int32_t> members;
        for (int32_t iFileId : pGroup->GetMembers())
        {
            auto it = parse.importIds.find(iFileId);
            if (it != parse.importIds.end())
            {
                members.push_back(it->second);
            }
        }
        pGroup->SetMembers(members);
    }
    m_iNextEntityId = parse.iNextId;
    m_entities.insert(m_entities.end(), parse.entities.begin(), parse.entities.end());
    for (CSceneEntity* pEntity : parse.entities)
    {
        if (IsUpdated(pEntity->GetType()))
        {
            m_updateList.push_back(pEntity);
        }
    }
    m_pending.insert(m_pending.end(), parse.pending.begin(), parse.pending.end());
    imported = parse.entities;
    parse.entities.clear();
    m_bIndexDirty = true;
    // Members point at their group again.
    for (CSceneEntity* pEntity : imported)
    {
        if (pEntity->GetType() == ENTITY_GROUP)
        {
            for (int32_t iId : static_cast<CGroupSceneEntity*>(pEntity)->GetMembers())
            {
                CSceneEntity* pMember = FindById(iId);
                if (pMember && pMember->GetType() != ENTITY_GROUP)
                {
                    pMember->SetGroupId(pEntity->GetId());
                }
            }
        }
    }
    for (CSceneEntity* pEntity : parse.activate)
    {
        pEntity->OnLoaded();
    }
    return true;
}

bool CSceneContent::ReadFile(const char* pcPath, CSceneReadError* pError)
{
    std::vector<uint8_t> bytes;
    if (!ReadWholeFile(pcPath, bytes))
    {
        if (pError)
        {
            *pError = CSceneReadError{-1, 0, "cannot open or read the file"};
        }
        return false;
    }
    Kestrin::Utility::CMemoryStream stream(bytes.data(), static_cast<int32_t>(bytes.size()));
    return Read(stream, pError);
}

} // namespace Ovrel
