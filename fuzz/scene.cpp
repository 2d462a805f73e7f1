// The `.scene` reader (and the `.prop` reader) on any bytes: no crash, no read outside the
// data, no leak. What reads is written back, read again and described.
#include "scene/SceneClassDesc.h"
#include "scene/SceneContent.h"
#include "scene/ScenePropFile.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace
{
// Touches every value a description reports.
class CSinkVisitor final : public Ovrel::ISceneFieldVisitor
{
public:
    void OnBlock(uint32_t uTag, int32_t iVersion) override
    {
        m_uSum += uTag + static_cast<uint32_t>(iVersion);
    }
    void OnInt(const char*, int64_t iValue) override { m_uSum += static_cast<uint32_t>(iValue); }
    void OnFloats(const char*, const float* pf, int32_t iCount) override
    {
        for (int32_t i = 0; i < iCount; ++i)
        {
            m_uSum += pf[i] > 0.0f ? 1u : 0u;
        }
    }
    void OnString(const char*, const std::string& s) override { m_uSum += static_cast<uint32_t>(s.size()); }
    void OnBytes(const char*, const uint8_t* p, int32_t iCount) override { m_uSum += iCount > 0 ? p[0] : 0u; }
    void BeginList(const char*) override {}
    void EndList() override {}
    void BeginItem() override {}
    void EndItem() override {}

    uint32_t m_uSum = 0;
};

void Exercise(Ovrel::CSceneContent& scene)
{
    CSinkVisitor sink;
    for (Ovrel::CSceneEntity* pEntity : scene.GetEntities())
    {
        Ovrel::CSceneClassRegistry::Describe(*pEntity, sink);
        Kestrin::Utility::CBox3 box;
        pEntity->GetBoundingBox(box);
        float fDistance = 0.0f;
        pEntity->HitTest({0, 0, 0}, {0, 0, 1}, fDistance);
    }
    Kestrin::Utility::CMemoryWriteStream out;
    if (!scene.Write(out) || out.GetSize() == 0)
    {
        return;
    }
    std::vector<uint8_t> bytes(out.GetData(), out.GetData() + out.GetSize());
    Ovrel::CSceneContent again;
    again.SetServices(nullptr, nullptr, nullptr, nullptr, nullptr, true);
    Kestrin::Utility::CMemoryStream in(bytes.data(), static_cast<int32_t>(bytes.size()));
    again.Read(in);
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t iSize)
{
    static const bool s_bLinked = Ovrel::CSceneClassRegistry::Link();
    (void)s_bLinked;
    if (iSize > (1u << 24))
    {
        return 0;
    }
    Ovrel::CSceneContent scene;
    scene.SetServices(nullptr, nullptr, nullptr, nullptr, nullptr, true);
    Kestrin::Utility::CMemoryStream stream(pData, static_cast<int32_t>(iSize));
    if (scene.Read(stream))
    {
        Exercise(scene);
    }
    // The import reader over the same bytes, into a scene that has content.
    Kestrin::Utility::CMemoryStream importStream(pData, static_cast<int32_t>(iSize));
    std::vector<Ovrel::CSceneEntity*> imported;
    scene.ReadImport(importStream, imported);

    Ovrel::CScenePropFile props;
    Kestrin::Utility::CMemoryStream propStream(pData, static_cast<int32_t>(iSize));
    if (props.Read(propStream))
    {
        Kestrin::Utility::CMemoryWriteStream out;
        props.Write(out);
    }
    return 0;
}
