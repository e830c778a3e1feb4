// The three files of a key disk, wherever the disk is: a folder, or an image of a floppy disk.
#ifndef VELOXCTL_KEYDISK_MEDIA_H
#define VELOXCTL_KEYDISK_MEDIA_H

#include <optional>
#include <string>

namespace veloxctl::keydisk {

// A folder with a name of its own that goes with all its files.
class PrivateFolder {
  public:
    PrivateFolder();
    ~PrivateFolder();
    PrivateFolder(const PrivateFolder &) = delete;
    PrivateFolder &operator=(const PrivateFolder &) = delete;

    const std::string &Path() const { return path_; }

  private:
    std::string path_;
};

// A disk as a folder: the folder itself, or a private one with the files of an image. Fails when
// the path is neither, or the image holds no FAT file system.
class OpenedDisk {
  public:
    explicit OpenedDisk(const std::string &path);

    const std::string &Folder() const { return folder_; }

  private:
    std::optional<PrivateFolder> extracted_;
    std::string folder_;
};

// What a file of a disk is: its bytes, or why it has none. Read by the rule for removable media.
struct MediaFile {
    bool present = false;  // something of that name is there
    bool readable = false;
    std::string problem;  // when it is not readable
    std::string bytes;
};

MediaFile ReadMediaFile(const std::string &folder, const char *name);

}  // namespace veloxctl::keydisk

#endif  // VELOXCTL_KEYDISK_MEDIA_H
