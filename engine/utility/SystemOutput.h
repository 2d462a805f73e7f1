// ISystemOutput: the engine's message sink. Level 0 is normal, 1 warning, 2 or above fatal.
// The application installs its own; until then, and after it removes it, the default
// object shows a box for level 1 or above and ends the process for level 2 or above.
#pragma once

namespace Kestrin::Utility
{

class ISystemOutput
{
public:
    virtual ~ISystemOutput() = default;
    // Shows or records one message. Level 2 or above does not return in the default output.
    virtual void Print(int iLevel, const char* pcText) = 0;

protected:
    ISystemOutput() = default;
    ISystemOutput(const ISystemOutput&) = delete;
    ISystemOutput& operator=(const ISystemOutput&) = delete;
};

class CDefaultSystemOutput final : public ISystemOutput
{
public:
    void Print(int iLevel, const char* pcText) override;
};

// The current output; never null.
ISystemOutput* GetSystemOutput();
// Installs pOutput (not owned); null restores the default object.
void SetSystemOutput(ISystemOutput* pOutput);

// Format into 1024 bytes and print at level 0 (Printf) or 1 (Warn). A format error prints
// nothing.
void Printf(const char* pcFormat, ...) __attribute__((format(printf, 1, 2)));
void Warn(const char* pcFormat, ...) __attribute__((format(printf, 1, 2)));

} // namespace Kestrin::Utility
