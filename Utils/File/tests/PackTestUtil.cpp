#include "Utils/File/tests/PackTestUtil.h"

#include "Utils/Utility/GUtDebug.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <mutex>
#include <zlib.h>

namespace PackTest
{

CScratch::CScratch()
{
    char acTemplate[] = "/tmp/edpackXXXXXX";
    m_path = mkdtemp(acTemplate);
}

CScratch::~CScratch()
{
    std::error_code error;
    std::filesystem::remove_all(m_path, error);
}

namespace
{
std::mutex g_mutex;
std::vector<CMessage> g_messages;
} // namespace

CLogCapture::CLogCapture()
{
    Clear();
    GUtLog::Get().EnableMessageBox(false);
    GUtLog::Get().SetPreHook(
        [](bool bBox, int iLevel, const char*, const char* pcTitle, const char* pcText)
        {
            std::lock_guard<std::mutex> lock(g_mutex);
            g_messages.push_back(CMessage{bBox, iLevel, pcTitle ? pcTitle : "", pcText ? pcText : ""});
        });
    GUtLog::Get().Out().SetSinkHook(
        [](const char* pcText)
        {
            std::lock_guard<std::mutex> lock(g_mutex);
            g_messages.push_back(CMessage{false, -1, "", pcText ? pcText : ""});
        });
}

CLogCapture::~CLogCapture()
{
    GUtLog::Get().SetPreHook(nullptr);
    GUtLog::Get().Out().SetSinkHook(nullptr);
    GUtLog::Get().EnableMessageBox(true);
}

std::vector<CMessage> CLogCapture::Messages() const
{
    std::lock_guard<std::mutex> lock(g_mutex);
    return g_messages;
}

bool CLogCapture::Contains(const std::string& text) const
{
    for (const CMessage& message : Messages())
    {
        if (message.text.find(text) != std::string::npos)
        {
            return true;
        }
    }
    return false;
}

void CLogCapture::Clear()
{
    std::lock_guard<std::mutex> lock(g_mutex);
    g_messages.clear();
}

CBytes& CBytes::U8(uint8_t u)
{
    m_data.push_back(u);
    return *this;
}

CBytes& CBytes::U32(uint32_t u)
{
    for (int i = 0; i < 4; ++i)
    {
        m_data.push_back(static_cast<uint8_t>(u >> (8 * i)));
    }
    return *this;
}

CBytes& CBytes::U64(uint64_t u)
{
    return U32(static_cast<uint32_t>(u)).U32(static_cast<uint32_t>(u >> 32));
}

CBytes& CBytes::Name(const std::string& name)
{
    m_data.insert(m_data.end(), name.begin(), name.end());
    m_data.push_back(0);
    return *this;
}

CBytes& CBytes::Raw(const std::string& bytes)
{
    m_data.insert(m_data.end(), bytes.begin(), bytes.end());
    return *this;
}

CBytes& CBytes::Zeros(size_t uCount)
{
    m_data.insert(m_data.end(), uCount, 0);
    return *this;
}

std::vector<uint8_t> MakePack106(const std::vector<uint8_t>& dir, const std::string& data,
                                 const CHeaderFields& fields, uint32_t uVersion)
{
    uLongf uPacked = compressBound(static_cast<uLong>(dir.size()));
    std::vector<uint8_t> packed(uPacked);
    compress(packed.data(), &uPacked, dir.data(), static_cast<uLong>(dir.size()));
    packed.resize(uPacked);
    const uint32_t uDataOffset = 256 + static_cast<uint32_t>(uPacked);
    CBytes pack;
    pack.Raw(std::string("PAK\0", 4))
        .U32(uVersion)
        .U8(fields.uFlag)
        .U32(fields.uReserved)
        .U64(fields.uReserved64);
    pack.U32(256).U32(256).U32(static_cast<uint32_t>(dir.size())).U32(static_cast<uint32_t>(uPacked));
    pack.U32(uDataOffset)
        .U32(static_cast<uint32_t>(data.size()))
        .U32(uDataOffset + static_cast<uint32_t>(data.size()));
    pack.Zeros(256 - pack.Size());
    pack.Data().insert(pack.Data().end(), packed.begin(), packed.end());
    pack.Raw(data);
    return pack.Data();
}

uint32_t DataStartOld(size_t uDirSize)
{
    return 256 + static_cast<uint32_t>(uDirSize);
}

std::vector<uint8_t> MakePackOld(uint32_t uVersion, bool bMagic, const std::vector<uint8_t>& dir,
                                 const std::string& data)
{
    const uint32_t uDataOffset = DataStartOld(dir.size());
    CBytes pack;
    if (bMagic)
    {
        pack.Raw(std::string("PAK\0", 4));
    }
    pack.U32(uVersion).U8(0).U32(0);
    pack.U32(256).U32(256).U32(static_cast<uint32_t>(dir.size()));
    pack.U32(uDataOffset)
        .U32(static_cast<uint32_t>(data.size()))
        .U32(uDataOffset + static_cast<uint32_t>(data.size()));
    pack.Zeros(256 - pack.Size());
    pack.Data().insert(pack.Data().end(), dir.begin(), dir.end());
    pack.Raw(data);
    return pack.Data();
}

void WriteFile(const std::string& path, const std::vector<uint8_t>& bytes)
{
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

void WriteFile(const std::string& path, const std::string& bytes)
{
    WriteFile(path, std::vector<uint8_t>(bytes.begin(), bytes.end()));
}

std::vector<uint8_t> ReadFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

uint32_t GetU32(const std::vector<uint8_t>& bytes, size_t uOffset)
{
    return static_cast<uint32_t>(bytes[uOffset]) | static_cast<uint32_t>(bytes[uOffset + 1]) << 8 |
           static_cast<uint32_t>(bytes[uOffset + 2]) << 16 | static_cast<uint32_t>(bytes[uOffset + 3]) << 24;
}

} // namespace PackTest
