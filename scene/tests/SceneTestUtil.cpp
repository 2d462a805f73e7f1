#include "scene/tests/SceneTestUtil.h"

#include "scene/tests/SceneRecords.h"

#include <filesystem>
#include <fstream>

namespace SceneTest
{

bool ReadScene(const std::vector<uint8_t>& bytes, Ovrel::CSceneContent& scene, Ovrel::CSceneReadError* pError)
{
    Kestrin::Utility::CMemoryStream stream(bytes.data(), static_cast<int32_t>(bytes.size()));
    return scene.Read(stream, pError);
}

std::vector<uint8_t> WriteScene(const Ovrel::CSceneContent& scene)
{
    Kestrin::Utility::CMemoryWriteStream out;
    if (!scene.Write(out))
    {
        return {};
    }
    const uint8_t* p = out.GetData();
    return p ? std::vector<uint8_t>(p, p + out.GetSize()) : std::vector<uint8_t>{};
}

Expected Describe(Ovrel::CSceneEntity& entity)
{
    CCollectVisitor visitor;
    Ovrel::CSceneClassRegistry::Describe(entity, visitor);
    return visitor.values;
}

void KeepTestFile(const std::string& strName, const std::vector<uint8_t>& bytes, bool bExact,
                  const char* pcExtension)
{
    std::filesystem::path folder =
        std::filesystem::path("scene_test_files") / (bExact ? "exact" : "upgraded");
    std::filesystem::create_directories(folder);
    std::ofstream file(folder / (strName + pcExtension), std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

std::vector<uint8_t> SingleRecordFile(bool bBigEndian, uint32_t uType, const std::vector<uint8_t>& record)
{
    CSceneBytes b(bBigEndian);
    WriteHeader(b, 102, {}, {});
    b.RawI32(1).RawU32(uType);
    b.data.insert(b.data.end(), record.begin(), record.end());
    return b.data;
}

} // namespace SceneTest
