// The scene layer's one door to the disk: whole-file reads through the file layer, and
// writes that go to a temporary file renamed into place, so a failed save never leaves a
// half-written file where the old one was.
#pragma once

#include <cstdint>
#include <vector>

namespace Ovrel
{

// The whole file in one read. False when it cannot be opened or read, or is over 2 GiB.
bool ReadWholeFile(const char* pcPath, std::vector<uint8_t>& bytes);
// Writes the bytes to "<path>.tmp", then renames it over the path. False (and no temporary
// left behind) when any step fails.
bool ReplaceFile(const char* pcPath, const uint8_t* pData, int32_t iSize);

} // namespace Ovrel
