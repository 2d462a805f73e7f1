#include "scene/tests/SceneTestUtil.h"

#include "scene/tests/SceneRecords.h"

#include <atomic>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <unistd.h>

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

CTempFolder::CTempFolder()
{
    static std::atomic<int> s_iCount{0};
    std::filesystem::path folder =
        std::filesystem::temp_directory_path() /
        ("scene_test_" + std::to_string(getpid()) + "_" + std::to_string(s_iCount++));
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    m_strPath = folder.string() + "/";
}

CTempFolder::~CTempFolder()
{
    std::error_code error;
    std::filesystem::remove_all(m_strPath, error);
}

void WriteBytes(const std::string& strPath, const std::vector<uint8_t>& bytes)
{
    std::ofstream file(strPath, std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

void WriteText(const std::string& strPath, const std::string& strText)
{
    std::ofstream file(strPath, std::ios::binary | std::ios::trunc);
    file << strText;
}

std::vector<uint8_t> ReadBytes(const std::string& strPath)
{
    std::ifstream file(strPath, std::ios::binary);
    return std::vector<uint8_t>(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

std::string ReadText(const std::string& strPath)
{
    std::vector<uint8_t> bytes = ReadBytes(strPath);
    return std::string(bytes.begin(), bytes.end());
}

} // namespace SceneTest
