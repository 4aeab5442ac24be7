// A file written under a temporary name beside its target, ".NAME.partial.EXT",
// and renamed onto the target only once it is whole: a failed or interrupted
// write never touches the target. The temporary is held open and locked
// (flock) while it exists, so that a later run can tell the temporary of a
// killed run (unlocked) from one another process is still writing.
#pragma once

#include <string>
#include <vector>

class StagedFile {
public:
    StagedFile() = default;
    // Claims the temporary beside `target`: ".NAME.partial.EXT", or with this
    // process's id and a serial number added while another writer holds that
    // name. Failure when it cannot be created.
    explicit StagedFile(const std::string& target);
    // Removes the temporary unless it was committed.
    ~StagedFile();
    StagedFile(StagedFile&& other) noexcept;
    StagedFile& operator=(StagedFile&& other) noexcept;
    StagedFile(const StagedFile&) = delete;
    StagedFile& operator=(const StagedFile&) = delete;

    const std::string& Target() const { return target; }
    const std::string& Temporary() const { return temporary; }
    // The temporary, open for reading and writing.
    int Descriptor() const { return descriptor; }
    // Renames the temporary onto the target; Failure (the temporary removed)
    // with the reason the rename gave.
    void Commit();
    // Removes the temporary now.
    void Discard();

private:
    std::string target;
    std::string temporary;
    int descriptor = -1;
};

// The files of one step (a frame's outputs, a preset) renamed onto their
// targets together once all of them are written; those not committed are
// removed with the group.
class StagedFiles {
public:
    void Add(StagedFile file) { files.push_back(std::move(file)); }
    void CommitAll();

private:
    std::vector<StagedFile> files;
};

// The temporary name StagedFile first tries for `target`: ".NAME.partial.EXT".
std::string temporaryNameOf(const std::string& target);
