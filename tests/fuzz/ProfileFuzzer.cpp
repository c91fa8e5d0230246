// Feeds arbitrary profile files, keys and values to the profile reader and
// writer. Besides what the sanitizers catch, it checks the one promise the
// in-place rewriting keeps: after a write, reading the key gives the value
// back, whenever key and value are plain one-line text and the file ends
// with a line feed (an appended line would otherwise join the last one).

#include "app/Profile.h"
#include "platform/AlertRecorder.h"

#include <QTemporaryDir>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <string_view>

namespace {

QTemporaryDir *gHome = nullptr;
platform::AlertRecorder *gAlerts = nullptr;

bool PlainText(std::string_view text)
{
    return text.find('\n') == std::string_view::npos && text.find('\0') == std::string_view::npos;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    gHome = new QTemporaryDir;
    setenv("HOME", gHome->path().toLocal8Bit().constData(), 1);
    unsetenv("XDG_CONFIG_HOME");
    gAlerts = new platform::AlertRecorder;
    return 0;
}

// Input: <file bytes> 0x01 <key> 0x01 <value>; missing parts are empty.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string_view input(reinterpret_cast<const char *>(data), size);
    const size_t firstCut = input.find('\x01');
    const std::string_view body = input.substr(0, firstCut);
    std::string_view rest = firstCut == std::string_view::npos ? std::string_view()
                                                               : input.substr(firstCut + 1);
    const size_t secondCut = rest.find('\x01');
    const std::string key(rest.substr(0, secondCut));
    const std::string value(secondCut == std::string_view::npos ? std::string_view()
                                                                : rest.substr(secondCut + 1));

    if (!kestrin::CreatePrefFile("Kestrin", "Fuzz.pref"))
        abort();
    const std::string path = kestrin::GetSettingFullPath("Kestrin", "Fuzz.pref");
    {
        std::ofstream out(path, std::ios::binary | std::ios::trunc);
        out.write(body.data(), std::streamsize(body.size()));
    }

    std::string read;
    kestrin::GetProfileString("Kestrin", key, &read, "Fuzz.pref");
    if (!kestrin::SetProfileString("Kestrin", key, value, "Fuzz.pref"))
        abort();

    const bool endsClean = body.empty() || body.back() == '\n';
    if (PlainText(key) && PlainText(value) && endsClean) {
        std::string back;
        if (!kestrin::GetProfileString("Kestrin", key, &back, "Fuzz.pref") || back != value) {
            fprintf(stderr,
                    "wrote '%s' for '%s', read back '%s'\n",
                    value.c_str(),
                    key.c_str(),
                    back.c_str());
            abort();
        }
    }
    return 0;
}
