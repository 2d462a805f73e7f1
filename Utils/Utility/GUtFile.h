// GUtFile: the utility library's file object. It drives a back end (a file on disk, or an
// entry of a pack found by the pack search), and adds modes on top: binary or decimal text,
// memory mode (the whole file through one buffer), compressed mode (zlib blocks), a XOR
// key, and per-element byte order.
//
// Every operation takes the object's critical section, so one GUtFile may be shared by the
// loader threads and the main thread.
//
// Paths go through the path layer (GUtPath): '\' or '/', any case. A path opened for reading
// is looked for in the packs first (the pack search), then on disk; writing always goes to
// disk, since packs found by the search are read-only.
//
// Memory mode (32) reads the whole file into one buffer at open, or collects every write
// and writes the file out in one piece at Flush or Close. Compressed mode (96, binary only)
// stores blocks of
//   u32 compressed size, the zlib stream, u32 original size      (little-endian)
// one per Flush and one at Close; reading takes the blocks one after another.
//
// The key applies exactly once, to the bytes the caller reads and writes: the buffers of
// memory and compressed mode hold keyed bytes and go to disk with the key blanked, so a
// keyed file reads back the same in every mode.
#pragma once

#include "Utils/Utility/GUtIFile.h"
#include "Utils/Utility/GUtLock.h"
#include "Utils/Utility/GUtString.h"

#include <cstdint>
#include <vector>

class GUtFile
{
public:
    // Mode bits.
    enum : uint32_t
    {
        MODE_ALWAYS = 1, // given by every caller, no effect of its own
        MODE_BINARY = 2, // typed values as bytes; without it numbers are decimal text
        MODE_READ = 4,
        MODE_WRITE = 8,       // only READ|WRITE (12) opens for writing, and truncates
        MODE_APPEND = 16,     // only READ|WRITE|APPEND (28) appends: open or create, seek to end
        MODE_MEMORY = 32,     // the whole file goes through the memory buffer
        MODE_COMPRESSED = 64, // with MEMORY: zlib blocks; 96 marks compressed mode
        MODE_WIDE = 256,      // wide-text forms of the text mode
        MODE_WIDE2 = 512,
    };
    // The everyday modes: log files (truncating) and appending.
    static constexpr uint32_t MODE_LOG = 13;
    static constexpr uint32_t MODE_APPEND_TEXT = 29;

    // byteOrder 1 reverses the bytes of each element on typed reads and writes; any other
    // value (2 is used) stores them as they are.
    static constexpr int32_t BYTE_ORDER_SWAP = 1;
    static constexpr int32_t BYTE_ORDER_NATIVE = 2;

    GUtFile();
    // Opens at once; see Open.
    GUtFile(const char* pcPath, uint32_t uMode, bool bQuiet = false, bool bAsync = false,
            int32_t iByteOrder = BYTE_ORDER_NATIVE);
    // Closes with flush, then frees the buffers and the back end.
    virtual ~GUtFile();
    GUtFile(const GUtFile&) = delete;
    GUtFile& operator=(const GUtFile&) = delete;

    virtual bool IsOpen();
    // Closes any open file and opens pcPath in uMode. Tries the pack search first, then the
    // disk; for writing, creates a missing folder chain and tries once more. A failure is
    // reported as "open file %s Fail!" unless bQuiet, and returns false.
    virtual bool Open(const char* pcPath, uint32_t uMode, bool bQuiet = false, bool bAsync = false,
                      int32_t iByteOrder = BYTE_ORDER_NATIVE);
    // Writes out a memory or compressed buffer when bFlush (else drops it), then closes the
    // back end.
    virtual void Close(bool bFlush = true);
    // Memory mode: writes the buffer out and leaves memory mode. Compressed mode: writes the
    // buffered bytes as one block and goes on collecting. False when nothing is open.
    virtual bool Flush();
    // In memory mode a position past the end of the buffer is a programming error (asserted).
    // False when nothing is open or the position is negative.
    virtual bool Seek(int64_t iPosition);
    virtual bool SeekForward(int64_t iDelta);
    virtual bool SeekBackward(int64_t iDelta);
    virtual int64_t Tell();

    // Typed array writes, widths 8, 8, 4, 4, 4, 4, 4, 2, 2, 2. Each takes a byte count and
    // returns the bytes written. With byteOrder 1 each element is reversed, on a copy; a count
    // smaller than one element moves the bytes unswapped. "Long" is 32 bits on disk.
    virtual int32_t WriteDoubles(const double* p, int32_t iBytes);
    virtual int32_t WriteI64s(const int64_t* p, int32_t iBytes);
    virtual int32_t WriteFloats(const float* p, int32_t iBytes);
    virtual int32_t WriteI32s(const int32_t* p, int32_t iBytes);
    virtual int32_t WriteU32s(const uint32_t* p, int32_t iBytes);
    virtual int32_t WriteLongs(const int32_t* p, int32_t iBytes);
    virtual int32_t WriteULongs(const uint32_t* p, int32_t iBytes);
    virtual int32_t WriteI16s(const int16_t* p, int32_t iBytes);
    virtual int32_t WriteU16s(const uint16_t* p, int32_t iBytes);
    virtual int32_t WriteWChars(const char16_t* p, int32_t iBytes);
    // Raw writes: bytes as they are (the key still applies).
    virtual int32_t WriteChars(const char* p, int32_t iBytes);
    virtual int32_t WriteUChars(const uint8_t* p, int32_t iBytes);
    virtual int32_t WriteRaw(const void* p, int32_t iBytes);

    virtual int32_t ReadDoubles(double* p, int32_t iBytes);
    virtual int32_t ReadI64s(int64_t* p, int32_t iBytes);
    virtual int32_t ReadFloats(float* p, int32_t iBytes);
    virtual int32_t ReadI32s(int32_t* p, int32_t iBytes);
    virtual int32_t ReadU32s(uint32_t* p, int32_t iBytes);
    virtual int32_t ReadLongs(int32_t* p, int32_t iBytes);
    virtual int32_t ReadULongs(uint32_t* p, int32_t iBytes);
    virtual int32_t ReadI16s(int16_t* p, int32_t iBytes);
    virtual int32_t ReadU16s(uint16_t* p, int32_t iBytes);
    virtual int32_t ReadWChars(char16_t* p, int32_t iBytes);
    virtual int32_t ReadChars(char* p, int32_t iBytes);
    virtual int32_t ReadUChars(uint8_t* p, int32_t iBytes);
    virtual int32_t ReadRaw(void* p, int32_t iBytes);

    // The byte path under everything above: memory or compressed buffer when active, else
    // the back end; the key applies. Returns the bytes moved.
    virtual int32_t ReadBytes(void* pBuffer, int32_t iCount, GUtAsyncContext* pContext);
    virtual int32_t WriteBytes(const void* pBuffer, int32_t iCount, GUtAsyncContext* pContext);

    // Text forms. Outside binary mode numbers go as decimal text, and with the bits 256 or
    // 512 all text goes as UTF-16 code units (in the file's byte order); in binary mode
    // numbers go as typed values and strings as their bytes. Reading text takes one
    // whitespace-separated word; a word that isn't of the wanted type is reported as
    // "<word> : Data Type Error" and leaves the value as it was.
    GUtFile& operator<<(int32_t iValue);
    GUtFile& operator<<(uint32_t uValue);
    GUtFile& operator<<(int64_t iValue);
    GUtFile& operator<<(uint64_t uValue);
    GUtFile& operator<<(float fValue);
    GUtFile& operator<<(double dValue);
    GUtFile& operator<<(const char* pcText); // UTF-8
    GUtFile& operator<<(const GUtString& text);
    GUtFile& operator<<(const char16_t* pText);
    GUtFile& operator>>(int32_t& iValue);
    GUtFile& operator>>(uint32_t& uValue);
    GUtFile& operator>>(int64_t& iValue);
    GUtFile& operator>>(uint64_t& uValue);
    GUtFile& operator>>(float& fValue);
    GUtFile& operator>>(double& dValue);
    GUtFile& operator>>(GUtString& word); // one word as UTF-8 (binary mode: up to a NUL or space)
    // Writes text in the file's text form; returns the bytes written.
    int32_t WriteText(const char* pcText, int32_t iLength);

    // The size of the open file (the data in memory mode), or 0.
    int64_t Size();
    const GUtString& GetPath() const { return m_strPath; }
    uint32_t GetMode() const { return m_uMode; }
    int32_t GetErrorCode() const { return m_iErrorCode; }
    // Compression level selector: 0 gives level 0, 1 gives 1, 2 gives 9, 3 the zlib default.
    void SetCompressLevel(int32_t iSelector) { m_iCompressLevel = iSelector; }
    // A non-empty key XORs every raw byte read and written with key[keyIndex], keyIndex
    // advancing across calls.
    void SetKey(const char* pcKey);
    // Whether a failed open is reported through GUtLog (true) or on the console stream
    // (false, the default: the log's own files are GUtFiles). Process-wide.
    static void SetReportOpenFailureToLog(bool bToLog);

protected:
    bool _IsWriting() const;
    // Makes and opens the back end (pack entry or disk), making missing folders for writing.
    bool _OpenBackend(const char* pcPath, bool bAsync);
    void _ReportOpenFailure(const char* pcPath);
    bool _InitMemoryData();
    bool _WriteOutMemory();
    bool _InitCompressData();
    bool _UnCompress();
    bool _DeInitCompressData(bool bFinal);
    void _FreeBuffers();
    bool _SeekMemory(int64_t iPosition);
    // Copies into the memory buffer, growing it by the growth rule. The bytes written.
    int32_t _WriteMemory(const uint8_t* p, int32_t iCount);
    int32_t _ReadMemory(uint8_t* p, int32_t iCount);
    void _ApplyKey(uint8_t* p, int32_t iCount);
    bool _ReadWord(GUtString& word);

    GUtCriticalSection m_lock;
    int32_t m_iErrorCode = 1001;
    uint32_t m_uMode = 0;
    GUtString m_strPath;
    int32_t m_iCompressLevel = 3;
    uint32_t m_ulMemBufIdx = 0;  // position in the buffer
    uint32_t m_ulMemBufSize = 0; // the buffer's capacity (the data's size when reading)
    std::vector<uint8_t> m_memBuffer;
    uint32_t m_ulDataForDecompressSize = 0; // the compressed block's size
    std::vector<uint8_t> m_packedBuffer;
    GUtAsyncContext* m_pWaitContext = nullptr;
    int32_t m_iByteOrder = BYTE_ORDER_NATIVE;
    GUtString m_strKey;
    int32_t m_iKeyIndex = 0;
    int32_t m_iReserved = 0;
    uint16_t m_uFlags = 0x0100 | 0x0001;
    GUtIFile* m_pBackend = nullptr;
    // The end of the data in the memory buffer: seeking back and writing keeps what follows.
    uint32_t m_ulMemBufEnd = 0;
};

// The growth rule of the memory buffer: the larger of min(2 * size, size + 32768) and the
// needed size rounded up to the next multiple of 2048 (a whole 2048 more when it is one).
uint64_t GUtFileGrowBuffer(uint64_t uSize, uint64_t uNeeded);

// Creates each missing folder of pcFolder, level by level. On failure prints
// "GUtCreateFile:: Error, error code: <errno> error msg: <text>" on the console stream.
bool GUtCreateFolderChain(const char* pcFolder);
