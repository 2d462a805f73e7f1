// edtool scene: dump, resave and check `.scene` files (and their `.prop` side files), all
// through the scene code, in a headless scene without engine services.
#include "tools/edtool/Commands.h"

#include "scene/Scene.h"
#include "scene/SceneClassDesc.h"
#include "scene/SceneContent.h"
#include "scene/SceneDiskFile.h"
#include "scene/SceneGroupEntity.h"
#include "scene/SceneMeshEntities.h"
#include "scene/ScenePropFile.h"

#include "engine/utility/AsyncLoader.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

using namespace Ovrel;

namespace
{

// ---------------------------------------------------------------------------------------
// JSON output of the field visitor

class CJsonWriter final : public ISceneFieldVisitor
{
public:
    CJsonWriter() { m_stack.push_back({true, false}); }

    const std::string& Text() const { return m_strOut; }

    void BeginObject(const char* pcName)
    {
        Key(pcName);
        m_strOut += '{';
        m_stack.push_back({true, false});
    }
    void EndObject() { Close('}'); }
    void Raw(const char* pcName, const std::string& strJson)
    {
        Key(pcName);
        m_strOut += strJson;
    }

    void OnBlock(uint32_t uTag, int32_t iVersion) override
    {
        std::string strKey = "@" + TagText(uTag);
        Key(strKey.c_str());
        m_strOut += std::to_string(iVersion);
    }
    void OnInt(const char* pcName, int64_t iValue) override
    {
        Key(pcName);
        m_strOut += std::to_string(iValue);
    }
    void OnFloats(const char* pcName, const float* pfValues, int32_t iCount) override
    {
        Key(pcName);
        if (iCount == 1)
        {
            m_strOut += Float(pfValues[0]);
            return;
        }
        m_strOut += '[';
        for (int32_t i = 0; i < iCount; ++i)
        {
            m_strOut += (i ? ", " : "") + Float(pfValues[i]);
        }
        m_strOut += ']';
    }
    void OnString(const char* pcName, const std::string& strValue) override
    {
        Key(pcName);
        m_strOut += Quote(strValue);
    }
    void OnBytes(const char* pcName, const uint8_t* pValues, int32_t iCount) override
    {
        Key(pcName);
        static const char acHex[] = "0123456789abcdef";
        m_strOut += '"';
        for (int32_t i = 0; i < iCount; ++i)
        {
            m_strOut += acHex[pValues[i] >> 4];
            m_strOut += acHex[pValues[i] & 15];
        }
        m_strOut += '"';
    }
    void BeginList(const char* pcName) override
    {
        Key(pcName);
        m_strOut += '[';
        m_stack.push_back({true, true});
    }
    void EndList() override { Close(']'); }
    void BeginItem() override
    {
        Key(nullptr);
        m_strOut += '{';
        m_stack.push_back({true, false});
    }
    void EndItem() override { Close('}'); }

    static std::string Quote(const std::string& strText)
    {
        // Bytes above 127 come out as code points 128 to 255: names are in the game's code
        // page, and this keeps every byte.
        std::string strOut = "\"";
        for (unsigned char c : strText)
        {
            if (c == '"' || c == '\\')
            {
                strOut += '\\';
                strOut += static_cast<char>(c);
            }
            else if (c < 0x20 || c >= 0x7F)
            {
                char acEscape[8];
                snprintf(acEscape, sizeof(acEscape), "\\u%04x", c);
                strOut += acEscape;
            }
            else
            {
                strOut += static_cast<char>(c);
            }
        }
        return strOut + "\"";
    }

    static std::string Float(float f)
    {
        if (std::isnan(f))
        {
            return "\"nan\"";
        }
        if (std::isinf(f))
        {
            return f > 0 ? "\"inf\"" : "\"-inf\"";
        }
        char acText[32];
        snprintf(acText, sizeof(acText), "%.9g", static_cast<double>(f));
        return acText;
    }

    static std::string TagText(uint32_t uTag)
    {
        std::string strText;
        for (int iShift = 24; iShift >= 0; iShift -= 8)
        {
            char c = static_cast<char>((uTag >> iShift) & 0xFF);
            strText += (c >= 0x20 && c < 0x7F) ? c : '?';
        }
        while (!strText.empty() && strText.back() == ' ')
        {
            strText.pop_back();
        }
        return strText;
    }

private:
    struct CLevel
    {
        bool bFirst;
        bool bList;
    };

    void Key(const char* pcName)
    {
        CLevel& level = m_stack.back();
        if (m_stack.size() > 1)
        {
            m_strOut += level.bFirst ? "" : ",";
            m_strOut += "\n" + std::string((m_stack.size() - 1) * 2, ' ');
        }
        level.bFirst = false;
        if (pcName && !level.bList)
        {
            m_strOut += Quote(pcName) + ": ";
        }
    }
    void Close(char cClose)
    {
        bool bEmpty = m_stack.back().bFirst;
        m_stack.pop_back();
        if (!bEmpty)
        {
            m_strOut += "\n" + std::string((m_stack.size() - 1) * 2, ' ');
        }
        m_strOut += cClose;
    }

    std::string m_strOut;
    std::vector<CLevel> m_stack;
};

bool IsPropFile(const char* pcPath)
{
    size_t iLength = strlen(pcPath);
    return iLength >= 5 && strcasecmp(pcPath + iLength - 5, ".prop") == 0;
}

// Reads a scene headless; prints the reason and returns false on failure.
bool LoadScene(const char* pcPath, CSceneContent& scene, std::vector<uint8_t>& bytes)
{
    if (!ReadWholeFile(pcPath, bytes))
    {
        fprintf(stderr, "%s: cannot open or read the file\n", pcPath);
        return false;
    }
    scene.SetServices(nullptr, nullptr, nullptr, nullptr, nullptr, true);
    Kestrin::Utility::CMemoryStream stream(bytes.data(), static_cast<int32_t>(bytes.size()));
    CSceneReadError error;
    if (!scene.Read(stream, &error))
    {
        fprintf(stderr, "%s: error at byte %d: %s\n", pcPath, stream.GetReadPosition(),
                error.strText.c_str());
        return false;
    }
    return true;
}

void DumpTable(CJsonWriter& json, const char* pcName, const CAtlasTable& table)
{
    json.BeginObject(pcName);
    CSceneRecordIO io(json);
    table.Write(io, false);
    json.EndObject();
}

int Dump(const char* pcPath)
{
    CJsonWriter json;
    json.BeginObject(nullptr);
    if (IsPropFile(pcPath))
    {
        CScenePropFile props;
        if (!props.ReadFile(pcPath))
        {
            fprintf(stderr, "%s: not a readable .prop file\n", pcPath);
            return 1;
        }
        json.Raw("byteOrder", props.m_bSwapBytes ? "\"big\"" : "\"little\"");
        props.Describe(json);
        json.EndObject();
        printf("%s\n", json.Text().c_str());
        return 0;
    }
    CSceneContent scene;
    std::vector<uint8_t> bytes;
    if (!LoadScene(pcPath, scene, bytes))
    {
        return 1;
    }
    const CBox3& box = scene.GetBoundingBox();
    json.Raw("magic", "\"SCEN\"");
    json.Raw("byteOrder", scene.GetSwapBytes() ? "\"big\"" : "\"little\"");
    json.OnInt("version", scene.GetFileVersion());
    json.OnFloats("boxMin", &box.vMin.x, 3);
    json.OnFloats("boxMax", &box.vMax.x, 3);
    DumpTable(json, "lightMaps", scene.GetLightMaps());
    DumpTable(json, "colorLightMaps", scene.GetColorLightMaps());
    json.OnInt("entityCount", scene.GetEntityCount());
    json.BeginList("entities");
    for (CSceneEntity* pEntity : scene.GetEntities())
    {
        const CSceneClassDesc* pDesc = CSceneClassRegistry::FindByType(pEntity->GetType());
        json.BeginItem();
        json.OnString("type", pDesc ? pDesc->pcName : "?");
        json.OnInt("typeCode", pEntity->GetType());
        CSceneClassRegistry::Describe(*pEntity, json);
        json.EndItem();
    }
    json.EndList();
    json.EndObject();
    printf("%s\n", json.Text().c_str());
    return 0;
}

int Resave(const char* pcIn, const char* pcOut)
{
    if (IsPropFile(pcIn))
    {
        CScenePropFile props;
        if (!props.ReadFile(pcIn))
        {
            fprintf(stderr, "%s: not a readable .prop file\n", pcIn);
            return 1;
        }
        if (!props.WriteFile(pcOut))
        {
            fprintf(stderr, "%s: cannot write the file\n", pcOut);
            return 1;
        }
        return 0;
    }
    CSceneContent scene;
    std::vector<uint8_t> bytes;
    if (!LoadScene(pcIn, scene, bytes))
    {
        return 1;
    }
    if (!scene.WriteFile(pcOut))
    {
        fprintf(stderr, "%s: cannot write the file\n", pcOut);
        return 1;
    }
    return 0;
}

// ---------------------------------------------------------------------------------------
// check

void CheckIdsAndGroups(const CSceneContent& scene, int& iWarnings)
{
    std::unordered_map<int32_t, int32_t> seen;
    std::unordered_map<int32_t, int32_t> memberOf;
    for (int32_t i = 0; i < scene.GetEntityCount(); ++i)
    {
        CSceneEntity* pEntity = scene.GetEntity(i);
        int32_t iId = pEntity->GetId();
        if (iId == 0)
        {
            printf("warning: entity %d \"%s\" has id 0\n", i, pEntity->GetName().c_str());
            ++iWarnings;
        }
        else if (!seen.emplace(iId, i).second)
        {
            printf("warning: entity %d \"%s\" repeats the id %d of entity %d\n", i,
                   pEntity->GetName().c_str(), iId, seen[iId]);
            ++iWarnings;
        }
        if (pEntity->GetLayer() < 0 || pEntity->GetLayer() > 63)
        {
            printf("warning: entity %d \"%s\" is on layer %d, outside 0 to 63: never shown or picked\n", i,
                   pEntity->GetName().c_str(), pEntity->GetLayer());
            ++iWarnings;
        }
        if (pEntity->GetGroupId() != 0 && !pEntity->FindParentGroup())
        {
            printf("warning: entity %d \"%s\" names group %d, which is no group of this file\n", i,
                   pEntity->GetName().c_str(), pEntity->GetGroupId());
            ++iWarnings;
        }
        if (pEntity->GetType() != ENTITY_GROUP)
        {
            continue;
        }
        for (int32_t iMember : static_cast<CGroupSceneEntity*>(pEntity)->GetMembers())
        {
            CSceneEntity* pMember = scene.FindById(iMember);
            if (!pMember || pMember->GetType() == ENTITY_GROUP)
            {
                printf("warning: group \"%s\" lists %d, which is no entity that can join a group\n",
                       pEntity->GetName().c_str(), iMember);
                ++iWarnings;
            }
            else if (!memberOf.emplace(iMember, iId).second)
            {
                printf("warning: entity %d is a member of groups %d and %d\n", iMember, memberOf[iMember],
                       iId);
                ++iWarnings;
            }
        }
    }
}

void CheckTable(const char* pcName, const CAtlasTable& table, const CSceneContent& scene, int& iWarnings)
{
    for (size_t i = 0; i < table.maps.size(); ++i)
    {
        if (table.maps[i].strName.empty())
        {
            printf("warning: %s map %zu has no name; a save counts only named maps and shifts the table\n",
                   pcName, i);
            ++iWarnings;
        }
    }
    if (table.maps.empty() && !table.entries.empty())
    {
        printf("warning: %s has %zu entries but no map; a save drops them\n", pcName, table.entries.size());
        ++iWarnings;
    }
    for (size_t i = 0; i < table.entries.size(); ++i)
    {
        const CAtlasEntry& entry = table.entries[i];
        if (entry.iMapIndex < -1 || entry.iMapIndex >= static_cast<int32_t>(table.maps.size()))
        {
            printf("warning: %s entry %zu names map %d of %zu\n", pcName, i, entry.iMapIndex,
                   table.maps.size());
            ++iWarnings;
        }
        if (entry.iEntityId != -1 && !scene.FindById(entry.iEntityId))
        {
            printf("warning: %s entry %zu belongs to entity %d, which the file lacks\n", pcName, i,
                   entry.iEntityId);
            ++iWarnings;
        }
    }
}

void CheckLightMapIndex(const char* pcName, const CSceneEntity& entity, int32_t iIndex,
                        const CAtlasTable& table, int& iWarnings)
{
    if (iIndex == -1)
    {
        return;
    }
    const CAtlasEntry* pEntry = table.GetEntry(iIndex);
    if (!pEntry || pEntry->iEntityId != entity.GetId())
    {
        printf("warning: \"%s\" has %s index %d, which is not its entry; a renderer drops it to -1\n",
               entity.GetName().c_str(), pcName, iIndex);
        ++iWarnings;
    }
}

void CheckResave(const CSceneContent& scene, const std::vector<uint8_t>& bytes, int& iWarnings)
{
    Kestrin::Utility::CMemoryWriteStream out;
    if (!scene.Write(out))
    {
        printf("warning: the scene cannot be written back\n");
        ++iWarnings;
        return;
    }
    const uint8_t* pOut = out.GetData();
    size_t iOutSize = static_cast<size_t>(out.GetSize());
    size_t iSame = 0;
    while (iSame < iOutSize && iSame < bytes.size() && pOut[iSame] == bytes[iSame])
    {
        ++iSame;
    }
    if (iSame == iOutSize && iSame == bytes.size())
    {
        return;
    }
    if (iSame == iOutSize)
    {
        printf("warning: %zu bytes follow the last entity\n", bytes.size() - iOutSize);
    }
    else
    {
        printf("warning: a resave differs from the file at byte %zu (older blocks are saved upgraded)\n",
               iSame);
    }
    ++iWarnings;
}

int Check(const char* pcPath)
{
    if (IsPropFile(pcPath))
    {
        CScenePropFile props;
        if (!props.ReadFile(pcPath))
        {
            fprintf(stderr, "%s: not a readable .prop file\n", pcPath);
            return 1;
        }
        printf("%s: %zu meshes\n", pcPath, props.meshes.size());
        return 0;
    }
    CSceneContent scene;
    std::vector<uint8_t> bytes;
    if (!LoadScene(pcPath, scene, bytes))
    {
        return 1;
    }
    int iWarnings = 0;
    CheckIdsAndGroups(scene, iWarnings);
    CheckTable("lightmap table", scene.GetLightMaps(), scene, iWarnings);
    CheckTable("colour lightmap table", scene.GetColorLightMaps(), scene, iWarnings);
    for (CSceneEntity* pEntity : scene.GetEntities())
    {
        if (pEntity->GetType() == ENTITY_STATIC_MESH)
        {
            auto* pMesh = static_cast<CStaticMeshSceneEntity*>(pEntity);
            CheckLightMapIndex("lightmap", *pMesh, pMesh->GetLightMapIndex(), scene.GetLightMaps(),
                               iWarnings);
            CheckLightMapIndex("colour lightmap", *pMesh, pMesh->GetColorLightMapIndex(),
                               scene.GetColorLightMaps(), iWarnings);
        }
        else if (pEntity->GetType() == ENTITY_CLOTH)
        {
            auto* pCloth = static_cast<CClothSceneEntity*>(pEntity);
            CheckLightMapIndex("lightmap", *pCloth, pCloth->GetLightMapIndex(), scene.GetLightMaps(),
                               iWarnings);
        }
    }
    CheckResave(scene, bytes, iWarnings);
    printf("%s: version %d, %s-endian, %d entities, %d warnings\n", pcPath, scene.GetFileVersion(),
           scene.GetSwapBytes() ? "big" : "little", scene.GetEntityCount(), iWarnings);
    return 0;
}

// ---------------------------------------------------------------------------------------
// open and import: through CScene, as the editors use it

double MillisecondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

// The open through the background loader, driven as the frame loop drives it: Tick(3) and
// the scene's Update once a frame, until nothing loads.
int OpenSceneAsync(const char* pcPath, int32_t iExpected)
{
    constexpr int32_t TICK_BUDGET_MS = 3;
    Kestrin::Utility::CAsyncLoader loader;
    loader.Start(true);
    Kestrin::Utility::SetAsyncLoader(&loader);
    CScene scene;
    scene.SetServices(nullptr, nullptr, nullptr, nullptr, nullptr, true);
    auto start = std::chrono::steady_clock::now();
    bool bOk = scene.Open(pcPath, true);
    int32_t iFrames = 0;
    double dLongestTick = 0.0;
    while (bOk && scene.IsLoading())
    {
        auto tick = std::chrono::steady_clock::now();
        loader.Tick(TICK_BUDGET_MS);
        dLongestTick = std::max(dLongestTick, MillisecondsSince(tick));
        scene.Update(0.0f, 0.0f);
        ++iFrames;
    }
    double dMilliseconds = MillisecondsSince(start);
    Kestrin::Utility::SetAsyncLoader(nullptr);
    loader.Stop();
    if (!bOk || !scene.HasLoaded() || scene.GetEntityCount() != iExpected)
    {
        fprintf(stderr, "%s: the scene does not open through the loader\n", pcPath);
        return 1;
    }
    printf("%s: opened through the loader in %.3f ms over %d frames (longest Tick %.3f ms), %d entities\n",
           pcPath, dMilliseconds, iFrames, dLongestTick, scene.GetEntityCount());
    return 0;
}

void PrintCounts(const CScene& scene)
{
    std::map<uint32_t, int32_t> counts;
    for (CSceneEntity* pEntity : scene.GetEntities())
    {
        ++counts[pEntity->GetType()];
    }
    for (const auto& [uType, iCount] : counts)
    {
        const CSceneClassDesc* pDesc = CSceneClassRegistry::FindByType(uType);
        printf("  %-26s %6d\n", pDesc ? pDesc->pcName : "?", iCount);
    }
}

int OpenScene(const char* pcPath)
{
    CScene scene;
    scene.SetServices(nullptr, nullptr, nullptr, nullptr, nullptr, true);
    auto start = std::chrono::steady_clock::now();
    if (!scene.Open(pcPath, false))
    {
        fprintf(stderr, "%s: the scene does not open\n", pcPath);
        return 1;
    }
    printf("%s: opened at once in %.3f ms, %d entities, next id %d\n", pcPath, MillisecondsSince(start),
           scene.GetEntityCount(), scene.GetNextEntityId());
    PrintCounts(scene);
    return OpenSceneAsync(pcPath, scene.GetEntityCount());
}

int ImportScene(const char* pcScene, const char* pcIn, const char* pcOut)
{
    CScene scene;
    scene.SetServices(nullptr, nullptr, nullptr, nullptr, nullptr, true);
    if (!scene.Open(pcScene, false))
    {
        fprintf(stderr, "%s: the scene does not open\n", pcScene);
        return 1;
    }
    CGroupSceneEntity* pGroup = scene.Import(pcIn, ENTITY_ALL, false);
    if (!pGroup)
    {
        fprintf(stderr, "%s: nothing could be imported\n", pcIn);
        return 1;
    }
    if (!scene.Save(pcOut))
    {
        fprintf(stderr, "%s: cannot write the file\n", pcOut);
        return 1;
    }
    printf("%s: group \"%s\" (id %d) with %zu entities; %d entities written to %s\n", pcIn,
           pGroup->GetName().c_str(), pGroup->GetId(), pGroup->GetMembers().size(), scene.GetEntityCount(),
           pcOut);
    return 0;
}

} // namespace

int SceneMain(int argc, char** argv)
{
    CSceneClassRegistry::Link();
    if (argc == 3 && strcmp(argv[1], "dump") == 0)
    {
        return Dump(argv[2]);
    }
    if (argc == 4 && strcmp(argv[1], "resave") == 0)
    {
        return Resave(argv[2], argv[3]);
    }
    if (argc == 3 && strcmp(argv[1], "check") == 0)
    {
        return Check(argv[2]);
    }
    if (argc == 3 && strcmp(argv[1], "open") == 0)
    {
        return OpenScene(argv[2]);
    }
    if (argc == 5 && strcmp(argv[1], "import") == 0)
    {
        return ImportScene(argv[2], argv[3], argv[4]);
    }
    fprintf(stderr, "%s\n", SCENE_USAGE);
    return 2;
}
