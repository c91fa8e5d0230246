#pragma once

#include <string>

// A tmpfs of a given size mounted on a folder (made if missing) for as long
// as the object lives: a full disk, or a volume that comes and goes. Test
// processes mount in a namespace of their own (PrivateMounts); where mounting
// is not allowed, Mount() fails and the test skips.
class SmallVolume
{
public:
    explicit SmallVolume(std::string path, std::string size = "1m");
    ~SmallVolume();

    SmallVolume(const SmallVolume &) = delete;
    SmallVolume &operator=(const SmallVolume &) = delete;

    bool Mount();
    void Unmount();
    const std::string &Path() const { return fPath; }

    static constexpr const char *kCannotMount = "mounting needs a privilege this test does not have";

private:
    std::string fPath;
    std::string fSize;
    bool fMounted = false;
};
