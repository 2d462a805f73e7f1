// The console under any sequence of typed characters, keys, prints and ticks: it never reads
// or writes outside its text, and keeps its limits (input of at most 100 characters with the
// cursor inside it, lines of at most 79 characters, at most 200 lines, 30 history entries).
#include "engine/ext/Console.h"
#include "engine/ext/Plotter2D.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace
{
class CCountingCallback final : public Kestrin::Ext::IConsoleCallback
{
public:
    void OnCommand(const char* pcLine) override { uTotal += std::string(pcLine).size(); }
    void OnPrint(const char* pcText) override { (void)pcText; }
    size_t uTotal = 0;
};

void Check(bool bOk)
{
    if (!bOk)
    {
        abort();
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t uSize)
{
    Kestrin::Ext::CConsole console;
    CCountingCallback callback;
    console.SetCallback(&callback);
    Kestrin::Plotter::CPlotter2D plotter;
    plotter.SetViewport(0, 0, 640, 480);
    size_t i = 0;
    while (i + 1 < uSize)
    {
        const uint8_t uOp = pData[i++] % 6;
        const uint8_t uArg = pData[i++];
        switch (uOp)
        {
            case 0:
                console.OnChar(uArg);
                break;
            case 1:
                console.OnKeyDown(uArg);
                break;
            case 2:
            {
                const size_t uLength = uArg < uSize - i ? uArg : uSize - i;
                const std::string strText(reinterpret_cast<const char*>(pData + i), uLength);
                i += uLength;
                console.Print(0xffffff, strText.c_str());
                break;
            }
            case 3:
                console.Tick(0.016f);
                break;
            case 4:
                console.SetVisibleLines(uArg % 40);
                break;
            default:
                console.Draw(plotter);
                plotter.Flush();
                break;
        }
        Check(console.GetInput().size() <= 100);
        Check(console.GetCursor() >= 0 && console.GetCursor() <= static_cast<int>(console.GetInput().size()));
        Check(console.GetHistory().size() <= 30);
        const auto lines = console.GetLines();
        Check(lines.size() <= 200);
        for (const auto& line : lines)
        {
            Check(line.strText.size() <= 79);
        }
    }
    return 0;
}
