// The two IFileIO implementations and the pool of mapped views.
#include "Utils/File/Posix/FileIOImpl_Posix.h"
#include "Utils/File/Posix/FileIOImpl_PosixMapView.h"
#include "Utils/File/tests/PackTestUtil.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>
#include <unistd.h>

using namespace GLib::File;
using namespace PackTest;

namespace
{
const uint64_t PAGE = static_cast<uint64_t>(::sysconf(_SC_PAGESIZE));

std::vector<uint8_t> Pattern(size_t uSize)
{
    std::vector<uint8_t> bytes(uSize);
    for (size_t i = 0; i < uSize; ++i)
    {
        bytes[i] = static_cast<uint8_t>((i * 131) ^ (i >> 9));
    }
    return bytes;
}

CFileSectionImpl_PosixMapView* AsMapView(IFileSection* pSection)
{
    return static_cast<CFileSectionImpl_PosixMapView*>(pSection);
}
} // namespace

TEST(MapViewPool, HoldsAtMost100ViewsAndRemapsAnEvictedSection)
{
    CScratch scratch;
    const size_t uCount = CFileSectionImpl_PosixMapView::MAX_MAPPED_VIEWS + 1;
    const std::vector<uint8_t> bytes = Pattern((uCount + 1) * PAGE);
    WriteFile(scratch / "f.bin", bytes);
    CFileIOImpl_PosixMapView io;
    ASSERT_TRUE(io.OpenFile((scratch / "f.bin").c_str(), false, false));
    ASSERT_EQ(CFileSectionImpl_PosixMapView::MappedViewCount(), 0u);

    // Sections at offsets off the page grid, made without mapping anything.
    std::vector<std::unique_ptr<IFileSection>> sections;
    for (size_t i = 0; i < uCount; ++i)
    {
        sections.emplace_back(io.CreateSection(i * PAGE + 100, 64));
        EXPECT_FALSE(AsMapView(sections.back().get())->IsMapped());
    }
    uint8_t acBuffer[64];
    for (size_t i = 0; i < uCount; ++i)
    {
        ASSERT_EQ(sections[i]->Read(acBuffer, sizeof(acBuffer), 0, 64), 64u);
        EXPECT_EQ(0, memcmp(acBuffer, bytes.data() + i * PAGE + 100, 64)) << i;
        EXPECT_LE(CFileSectionImpl_PosixMapView::MappedViewCount(), 100u);
    }
    // The 101st read detached the oldest section; all of them share one mapped window.
    EXPECT_EQ(CFileSectionImpl_PosixMapView::MappedViewCount(), 100u);
    EXPECT_EQ(CFileSectionImpl_PosixMapView::MappedWindowCount(), 1u);
    EXPECT_FALSE(AsMapView(sections[0].get())->IsMapped());
    EXPECT_TRUE(AsMapView(sections[1].get())->IsMapped());
    // Reading it again maps it afresh, at the cost of the next oldest.
    ASSERT_EQ(sections[0]->Read(acBuffer, sizeof(acBuffer), 10, 64), 54u);
    EXPECT_EQ(0, memcmp(acBuffer, bytes.data() + 110, 54));
    EXPECT_TRUE(AsMapView(sections[0].get())->IsMapped());
    EXPECT_FALSE(AsMapView(sections[1].get())->IsMapped());
    EXPECT_EQ(CFileSectionImpl_PosixMapView::MappedViewCount(), 100u);

    // Sections keep their file: closing the IO leaves them readable.
    io.CloseFile();
    ASSERT_EQ(sections[1]->Read(acBuffer, sizeof(acBuffer), 0, 8), 8u);
    EXPECT_EQ(0, memcmp(acBuffer, bytes.data() + PAGE + 100, 8));
    sections.clear();
    EXPECT_EQ(CFileSectionImpl_PosixMapView::MappedViewCount(), 0u);
    // The file went away with its last section: its kept window with it.
    EXPECT_EQ(CFileSectionImpl_PosixMapView::MappedWindowCount(), 0u);
}

TEST(MapViewPool, ViewsOfTheirOwnCountTowardTheLimit)
{
    CScratch scratch;
    const uint64_t uWindow = PAGE * CFileSectionImpl_PosixMapView::WINDOW_PAGES;
    const size_t uCount = CFileSectionImpl_PosixMapView::MAX_MAPPED_VIEWS + 1;
    // A sparse file: each section straddles a window boundary and needs a view of its own.
    const std::string path = scratch / "sparse.bin";
    WriteFile(path, std::string());
    ASSERT_EQ(::truncate(path.c_str(), static_cast<off_t>((uCount + 1) * uWindow)), 0);
    CFileIOImpl_PosixMapView io;
    ASSERT_TRUE(io.OpenFile(path.c_str(), false, false));
    std::vector<std::unique_ptr<IFileSection>> sections;
    uint8_t acBuffer[20];
    for (size_t i = 1; i <= uCount; ++i)
    {
        sections.emplace_back(io.CreateSection(i * uWindow - 10, 20));
        ASSERT_EQ(sections.back()->Read(acBuffer, sizeof(acBuffer), 0, 20), 20u);
        EXPECT_LE(CFileSectionImpl_PosixMapView::MappedWindowCount(), 100u);
    }
    EXPECT_EQ(CFileSectionImpl_PosixMapView::MappedViewCount(), 100u);
    EXPECT_EQ(CFileSectionImpl_PosixMapView::MappedWindowCount(), 100u);
    EXPECT_FALSE(AsMapView(sections[0].get())->IsMapped());
    // One small section inside a window: the window replaces an unused view.
    std::unique_ptr<IFileSection> pInside(io.CreateSection(5, 5));
    ASSERT_EQ(pInside->Read(acBuffer, sizeof(acBuffer), 0, 5), 5u);
    EXPECT_LE(CFileSectionImpl_PosixMapView::MappedWindowCount(), 100u);
    sections.clear();
    pInside.reset();
    io.CloseFile();
    EXPECT_EQ(CFileSectionImpl_PosixMapView::MappedWindowCount(), 0u);
}

TEST(MapViewPool, SectionsAreCutAtTheEndOfTheFile)
{
    CScratch scratch;
    const std::vector<uint8_t> bytes = Pattern(3 * PAGE + 17);
    WriteFile(scratch / "f.bin", bytes);
    CFileIOImpl_PosixMapView mapped;
    CFileIOImpl_Posix plain;
    ASSERT_TRUE(mapped.OpenFile((scratch / "f.bin").c_str(), false, true));
    ASSERT_TRUE(plain.OpenFile((scratch / "F.BIN").c_str(), false, false));
    EXPECT_EQ(mapped.FileSize(), bytes.size());
    for (IFileIO* pIO : {static_cast<IFileIO*>(&mapped), static_cast<IFileIO*>(&plain)})
    {
        std::unique_ptr<IFileSection> pSection(pIO->CreateSection(bytes.size() - 10, 100));
        EXPECT_EQ(pSection->Size(), 10u);
        uint8_t acBuffer[100];
        EXPECT_EQ(pSection->Read(acBuffer, sizeof(acBuffer), 0, 100), 10u);
        EXPECT_EQ(0, memcmp(acBuffer, bytes.data() + bytes.size() - 10, 10));
        EXPECT_EQ(pSection->Read(acBuffer, sizeof(acBuffer), 10, 1), 0u);
        // The capacity bounds the copy.
        EXPECT_EQ(pSection->Read(acBuffer, 3, 0, 100), 3u);
        EXPECT_EQ(pIO->Read(acBuffer, sizeof(acBuffer), bytes.size() - 4, 100), 4u);
        // Sections of a read-only file can't be written.
        EXPECT_EQ(pSection->Write(acBuffer, 4, 0, 4), 0u);
    }
}

TEST(MapViewPool, WritableFilesWriteThroughSections)
{
    CScratch scratch;
    for (int iKind = 0; iKind < 2; ++iKind)
    {
        std::unique_ptr<IFileIO> pIO;
        if (iKind == 0)
        {
            pIO = std::make_unique<CFileIOImpl_PosixMapView>();
        }
        else
        {
            pIO = std::make_unique<CFileIOImpl_Posix>();
        }
        const std::string path = scratch / ("w" + std::to_string(iKind) + ".bin");
        ASSERT_TRUE(pIO->CreateFile(path.c_str(), PAGE + 8));
        std::unique_ptr<IFileSection> pSection(pIO->CreateSection(PAGE - 2, 10));
        EXPECT_EQ(pSection->Write("abcdefghij", 10, 0, 10), 10u);
        pSection.reset();
        pIO->CloseFile();
        const std::vector<uint8_t> bytes = ReadFile(path);
        ASSERT_EQ(bytes.size(), PAGE + 8);
        EXPECT_EQ(std::string(bytes.begin() + PAGE - 2, bytes.end()), "abcdefghij");
    }
}

TEST(MapViewPoolDeathTest, SectionsAtOrPastTheEndAssert)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    CScratch scratch;
    WriteFile(scratch / "f.bin", Pattern(100));
    EXPECT_DEATH(
        {
            CFileIOImpl_PosixMapView io;
            io.OpenFile((scratch / "f.bin").c_str(), false, false);
            std::unique_ptr<IFileSection> pSection(io.CreateSection(100, 10));
            uint8_t acBuffer[10];
            pSection->Read(acBuffer, 10, 0, 10);
        },
        "m_nFileOffset < m_pFileIORef->uSize");
    EXPECT_DEATH(
        {
            CFileIOImpl_PosixMapView io;
            io.CreateFile((scratch / "g.bin").c_str(), 100);
            std::unique_ptr<IFileSection> pSection(io.CreateSection(90, 10));
            pSection->Write("01234567890", 11, 0, 11);
        },
        "uOffset\\) \\+ nWriteSize <= m_nSize");
}

TEST(MapViewPool, ThreadsShareThePoolWhileItEvicts)
{
    CScratch scratch;
    const size_t uSections = 300;
    const std::vector<uint8_t> bytes = Pattern(uSections * 1000 + 64);
    WriteFile(scratch / "f.bin", bytes);
    CFileIOImpl_PosixMapView io;
    ASSERT_TRUE(io.OpenFile((scratch / "f.bin").c_str(), false, false));
    std::vector<std::unique_ptr<IFileSection>> sections;
    for (size_t i = 0; i < uSections; ++i)
    {
        sections.emplace_back(io.CreateSection(i * 1000, 1000));
    }
    std::atomic<int> iErrors{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
    {
        threads.emplace_back(
            [&, t]
            {
                uint8_t acBuffer[1000];
                for (size_t n = 0; n < 2000; ++n)
                {
                    const size_t i = (n * 7 + static_cast<size_t>(t) * 131) % uSections;
                    if (sections[i]->Read(acBuffer, sizeof(acBuffer), 0, 1000) != 1000 ||
                        memcmp(acBuffer, bytes.data() + i * 1000, 1000) != 0)
                    {
                        ++iErrors;
                    }
                }
            });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    EXPECT_EQ(iErrors.load(), 0);
    EXPECT_LE(CFileSectionImpl_PosixMapView::MappedViewCount(), 100u);
}
