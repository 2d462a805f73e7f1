// The IFile family: the disk file, the inflating and encrypting decorators, the block store.
#include "Utils/Utility/IFile.h"
#include "Utils/File/tests/PackTestUtil.h"
#include "Utils/Utility/BlockStore.h"

#include <gtest/gtest.h>

#include <zlib.h>

using namespace GLib::File;
using namespace PackTest;

namespace
{
std::vector<uint8_t> FromHex(const std::string& hex)
{
    std::vector<uint8_t> bytes;
    for (size_t i = 0; i < hex.size(); i += 2)
    {
        bytes.push_back(static_cast<uint8_t>(std::stoul(hex.substr(i, 2), nullptr, 16)));
    }
    return bytes;
}

std::string ReadAll(IFile& file)
{
    std::string bytes;
    char acBuffer[100];
    uint32_t uRead = 0;
    while ((uRead = file.Read(acBuffer, sizeof(acBuffer))) > 0)
    {
        bytes.append(acBuffer, uRead);
    }
    return bytes;
}
} // namespace

TEST(NormalisePath, LowerCasesAndRemovesOnlyTheFirstClimb)
{
    EXPECT_EQ(NormalisePath("../../x"), "../x");
    EXPECT_EQ(NormalisePath("Data\\\\TEX//A.DDS"), "data/tex/a.dds");
    EXPECT_EQ(NormalisePath("a/../b/../c"), "a/b/../c");
    EXPECT_EQ(NormalisePath("a///b"), "a/b");
}

TEST(DiskFile, ModesAndSeekOrigins)
{
    CScratch scratch;
    const std::string path = scratch / "d.bin";
    DiskFile file;
    EXPECT_FALSE(file.Open(path.c_str(), DiskFile::OPEN_READ_ONLY));
    EXPECT_FALSE(file.Open(path.c_str(), DiskFile::OPEN_READ_WRITE));
    ASSERT_TRUE(file.Open(path.c_str(), DiskFile::OPEN_CREATE));
    EXPECT_EQ(file.Write("0123456789", 10), 10u);
    EXPECT_EQ(file.Seek(-3, IFile::SEEK_FROM_CURRENT), 7);
    EXPECT_EQ(file.Seek(-2, IFile::SEEK_FROM_END), 8);
    EXPECT_EQ(file.Seek(1, IFile::SEEK_FROM_START), 1);
    EXPECT_EQ(file.Seek(-5, IFile::SEEK_FROM_START), -1);
    char acBuffer[4];
    EXPECT_EQ(file.Read(acBuffer, 4), 4u);
    EXPECT_EQ(std::string(acBuffer, 4), "1234");
    EXPECT_TRUE(file.SetSize(6));
    EXPECT_EQ(file.Size(), 6u);
    ASSERT_TRUE(file.Open((scratch / "D.BIN").c_str(), DiskFile::OPEN_OPEN_OR_CREATE));
    EXPECT_EQ(file.Size(), 6u);
    ASSERT_TRUE(file.Open(path.c_str(), DiskFile::OPEN_READ_ONLY));
    EXPECT_EQ(file.Write("x", 1), 0u);
}

TEST(PackedFile, InflatesInPiecesAndIgnoresWritesAndSeeks)
{
    CScratch scratch;
    std::string content;
    for (int i = 0; i < 20000; ++i)
    {
        content += static_cast<char>((i * 7919) % 251); // compresses poorly: many 4 KiB inputs
    }
    uLongf uPacked = compressBound(static_cast<uLong>(content.size()));
    std::vector<uint8_t> packed(uPacked);
    compress(packed.data(), &uPacked, reinterpret_cast<const Bytef*>(content.data()),
             static_cast<uLong>(content.size()));
    packed.resize(uPacked);
    WriteFile(scratch / "p.z", packed);
    auto pDisk = std::make_unique<DiskFile>();
    ASSERT_TRUE(pDisk->Open((scratch / "p.z").c_str(), DiskFile::OPEN_READ_ONLY));
    PackedFile file(std::move(pDisk), static_cast<uint32_t>(content.size()));
    EXPECT_EQ(file.Size(), content.size());
    EXPECT_EQ(file.Write("x", 1), 0u);
    EXPECT_EQ(file.Seek(0, IFile::SEEK_FROM_START), -1);
    EXPECT_EQ(ReadAll(file), content);

    // A stream cut short stops without a fault.
    packed.resize(packed.size() / 2);
    WriteFile(scratch / "bad.z", packed);
    auto pBad = std::make_unique<DiskFile>();
    ASSERT_TRUE(pBad->Open((scratch / "bad.z").c_str(), DiskFile::OPEN_READ_ONLY));
    PackedFile bad(std::move(pBad), static_cast<uint32_t>(content.size()));
    EXPECT_LT(ReadAll(bad).size(), content.size());
}

TEST(EncryptedFile, MatchesAKnownAnswer)
{
    // AES-128-ECB with the key "Greet,earth." and zeros, computed outside this code (the
    // openssl command line tool) for the padded plain text of "Hello, pack!":
    //   48656c6c6f2c207061636b21 000000000000000000000000 7ee876e1 0c000000
    const std::vector<uint8_t> cipher =
        FromHex("bdc1098e5c2cd696183afc42f0cd60ef38ca285cbfa3c27f2bcd73255c8f492f");
    CScratch scratch;
    const std::string path = scratch / "e.bin";
    {
        auto pDisk = std::make_unique<DiskFile>();
        ASSERT_TRUE(pDisk->Open(path.c_str(), DiskFile::OPEN_CREATE));
        EncryptedFile file(std::move(pDisk));
        EXPECT_EQ(file.Size(), 0u); // an empty source
        EXPECT_EQ(file.Write("Hello, ", 7), 7u);
        EXPECT_EQ(file.Write("pack!", 5), 5u);
    }
    CBytes expected;
    expected.U32(32).Raw(std::string(cipher.begin(), cipher.end()));
    EXPECT_EQ(ReadFile(path), expected.Data());

    auto pDisk = std::make_unique<DiskFile>();
    ASSERT_TRUE(pDisk->Open(path.c_str(), DiskFile::OPEN_READ_WRITE));
    EncryptedFile file(std::move(pDisk));
    EXPECT_EQ(file.Size(), 12u);
    EXPECT_EQ(file.StoredCrc(), 0xE176E87Eu);              // crc32("Hello, pack!")
    EXPECT_EQ(file.Seek(100, IFile::SEEK_FROM_START), 12); // clamped
    EXPECT_EQ(file.Seek(-100, IFile::SEEK_FROM_CURRENT), 0);
    EXPECT_EQ(ReadAll(file), "Hello, pack!");
    // Each write rewrites the file; the padding follows ((n + 23) / 16) * 16.
    EXPECT_EQ(file.Write(" and more", 9), 9u); // 21 bytes: 32
    EXPECT_EQ(ReadFile(path).size(), 4u + 32u);
    EXPECT_EQ(file.Write("!!!!", 4), 4u); // 25 bytes: 48
    EXPECT_EQ(ReadFile(path).size(), 4u + 48u);
}

TEST(EncryptedFile, InconsistentSourcesGiveAnEmptyFile)
{
    CScratch scratch;
    const std::string path = scratch / "e.bin";
    auto Open = [&](const std::vector<uint8_t>& bytes)
    {
        WriteFile(path, bytes);
        auto pDisk = std::make_unique<DiskFile>();
        pDisk->Open(path.c_str(), DiskFile::OPEN_READ_ONLY);
        return std::make_unique<EncryptedFile>(std::move(pDisk));
    };
    EXPECT_EQ(Open({1, 2, 3, 4})->Size(), 0u);
    EXPECT_EQ(Open({200, 0, 0, 0, 1, 2, 3, 4, 5})->Size(), 0u); // length beyond the file
    EXPECT_EQ(Open({17, 0, 0, 0, 1, 2, 3, 4, 5})->Size(), 0u);  // not whole blocks
    // A decrypted content length larger than the buffer.
    std::vector<uint8_t> plain(16, 0);
    plain[12] = 0xFF;
    ASSERT_TRUE(EncryptedFile::EncryptBlocks(plain.data(), plain.size()));
    CBytes bytes;
    bytes.U32(16).Raw(std::string(plain.begin(), plain.end()));
    EXPECT_EQ(Open(bytes.Data())->Size(), 0u);
}

TEST(BlockStore, EntriesOfEveryKindReadThroughOpenFile)
{
    CScratch scratch;
    const std::string path = scratch / "store.bin";
    std::string big;
    for (int i = 0; i < 1000; ++i)
    {
        big += std::to_string(i) + ";";
    }
    {
        auto pStore = std::make_shared<CBlockStore>();
        ASSERT_TRUE(pStore->Create(path.c_str(), 64));
        ASSERT_TRUE(pStore->AddEntry("Data\\Plain.TXT", big.data(), static_cast<uint32_t>(big.size()),
                                     CBlockStore::KIND_PLAIN));
        ASSERT_TRUE(pStore->AddEntry("data/packed.txt", big.data(), static_cast<uint32_t>(big.size()),
                                     CBlockStore::KIND_DEFLATED));
        ASSERT_TRUE(pStore->AddEntry("data/secret.txt", "secret", 6, CBlockStore::KIND_ENCRYPTED));
        EXPECT_FALSE(pStore->AddEntry("DATA/PLAIN.txt", "x", 1, CBlockStore::KIND_PLAIN)); // taken
        // Growing an entry later splices blocks into its chain.
        std::unique_ptr<IFile> pPlain(pStore->OpenEntry("data/plain.txt"));
        pPlain->Seek(0, IFile::SEEK_FROM_END);
        EXPECT_EQ(pPlain->Write("<end>", 5), 5u);
    }
    WriteFile(scratch / "disk.txt", std::string("on disk"));
    ASSERT_TRUE(MountBlockStore(path.c_str()));
    std::unique_ptr<IFile> pFile(OpenFile("DATA\\PLAIN.TXT"));
    ASSERT_TRUE(pFile);
    EXPECT_EQ(ReadAll(*pFile), big + "<end>");
    pFile.reset(OpenFile("data/packed.txt"));
    ASSERT_TRUE(pFile);
    EXPECT_EQ(pFile->Size(), big.size());
    EXPECT_EQ(ReadAll(*pFile), big);
    pFile.reset(OpenFile("../data/Secret.txt")); // the first "../" goes in the store's names
    ASSERT_TRUE(pFile);
    EXPECT_EQ(ReadAll(*pFile), "secret");
    // Not in a store: the disk, read-only; nowhere: null.
    pFile.reset(OpenFile((scratch / "DISK.TXT").c_str()));
    ASSERT_TRUE(pFile);
    EXPECT_EQ(ReadAll(*pFile), "on disk");
    EXPECT_EQ(pFile->Write("x", 1), 0u);
    EXPECT_EQ(OpenFile((scratch / "absent.txt").c_str()), nullptr);
    UnmountBlockStores();
    EXPECT_EQ(OpenFile("data/plain.txt"), nullptr);
}

TEST(BlockStore, BrokenChainsStopWithoutHanging)
{
    CScratch scratch;
    const std::string path = scratch / "store.bin";
    {
        auto pStore = std::make_shared<CBlockStore>();
        ASSERT_TRUE(pStore->Create(path.c_str(), 32));
        std::string content(200, 'c');
        ASSERT_TRUE(pStore->AddEntry("e.txt", content.data(), 200, CBlockStore::KIND_PLAIN));
    }
    std::vector<uint8_t> bytes = ReadFile(path);
    const uint32_t uBlockCount = GetU32(bytes, 8);
    ASSERT_GT(uBlockCount, 4u);
    // Point the entry's second block at itself, a loop that never returns to the first, and
    // claim more bytes than the store holds.
    const uint32_t uFirst = 1; // the first block after the directory's
    const uint32_t uSecond = GetU32(bytes, 16 + 32 * uFirst);
    bytes[16 + 32 * uSecond] = static_cast<uint8_t>(uSecond);
    bytes[16 + 32 * uFirst + 8 + 6] = 1; // entry size 200 + 65536
    WriteFile(path, bytes);
    auto pStore = std::make_shared<CBlockStore>();
    ASSERT_TRUE(pStore->Open(path.c_str(), false));
    std::unique_ptr<IFile> pFile(pStore->OpenEntry("e.txt"));
    ASSERT_TRUE(pFile);
    EXPECT_EQ(pFile->Size(), 200u + 65536u);
    const size_t uRead = ReadAll(*pFile).size();
    EXPECT_GT(uRead, 0u);
    EXPECT_LE(uRead, (uBlockCount + 1) * 24u);
    // A header that doesn't fit the file isn't a store.
    bytes[8] = 0xFF;
    WriteFile(path, bytes);
    EXPECT_FALSE(std::make_shared<CBlockStore>()->Open(path.c_str(), false));
}
