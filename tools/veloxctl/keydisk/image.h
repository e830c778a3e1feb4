// Images of 1.44 MB floppy disks, made and read with mtools.
#ifndef VELOXCTL_KEYDISK_IMAGE_H
#define VELOXCTL_KEYDISK_IMAGE_H

#include <string>

namespace veloxctl::keydisk {

// The bytes of a FAT12 image with every file of a folder. Fails (EX_CANTCREAT) when they do not
// fit.
std::string MakeImage(const std::string &folder);

// Copies the files of a key disk from an image into a folder. What is a folder on the disk becomes
// an empty folder. Fails (EX_DATAERR) when the image holds no FAT file system or a file cannot be
// read.
void ExtractImage(const std::string &image, const std::string &folder);

}  // namespace veloxctl::keydisk

#endif  // VELOXCTL_KEYDISK_IMAGE_H
