#pragma once

#include <string>
#include <sys/types.h>

// A reference to a named entry: the folder's device and node plus the leaf
// name. Linux cannot open a file by (device, node), so the path the reference
// was made from travels with it and is what the storage classes open.
struct entry_ref
{
    dev_t device = 0;
    ino_t directory = 0;
    std::string name;
    std::string path;

    bool operator==(const entry_ref &other) const
    {
        return device == other.device && directory == other.directory && name == other.name;
    }
};

// The identity of a node on a volume, as stat reports it.
struct node_ref
{
    dev_t device = 0;
    ino_t node = 0;

    bool operator==(const node_ref &other) const = default;
};
