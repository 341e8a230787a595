#pragma once
// Cls_APIFile: file and path operations. Results of the four file operations are 0 on
// success, otherwise an errno value (ENOENT when the source is missing, ...).
#include <memory>
#include <string>
#include <string_view>

#include "frame/fileio.h"

namespace qumbrel {

class Cls_APIFile {
  public:
    // Shell operation flags. Kept for callers that set them; on Linux no operation asks
    // questions or shows progress, and RenameOnCollision picks a free "name (n).ext".
    bool SimpleProgress = false;
    bool Silent = true;
    bool RenameOnCollision = false;
    bool NoConfirmMakeDir = true;
    bool NoConfirm = true;

    // Copies a file (an existing target is replaced). Written to a temporary name beside
    // the target, flushed and renamed, so a target is never half written.
    int CopyFile(const std::string& source, const std::string& target) const;
    // A rename, or across file systems a copy, flush, size check and delete of the
    // source. A failure leaves the source where it was. Never replaces a file: with
    // RenameOnCollision a taken name gives way to "name (n).ext", else EEXIST.
    // `movedTo` (when given) receives the name used.
    int MoveFile(const std::string& source, const std::string& target,
                 std::string* movedTo = nullptr) const;
    // A rename inside one folder that replaces an existing target (finished reports).
    int RenameFile(const std::string& source, const std::string& target) const;
    int DeleteFile(const std::string& path) const;
    int DeleteComfort(const std::string& path, bool flagA, bool flagB) const;

    // Path texts. GetFilePath has no trailing separator; GetDrive is "" on Linux but
    // for a path that starts with a drive letter.
    static std::string GetFileName(std::string_view path);
    static std::string GetFileNameNoExtension(std::string_view path);
    static std::string GetFileExtension(std::string_view path, bool withoutDot);
    static std::string GetFileNoExtension(std::string_view path);
    static std::string GetFilePath(std::string_view path);
    static std::string GetDrive(std::string_view path);

    // Kind 0 system root, 1 system libraries, 2 the temporary folder.
    static std::string GetWindowsSpecialFolder(int kind);
    // By the Windows folder number: 5 documents, 7 startup (autostart), 16 desktop,
    // 26 application data, 28 local application data, 35 common application data.
    static std::string GetSpecialFolderPath(int csidl);

    // Creates all missing folders of `path`; true when the folder exists afterwards.
    static bool MakeFolderTree(const std::string& path);

    // Fault injection for tests: the n-th write of a copy fails (0: none).
    int failNthWrite = 0;
    // The file operations behind moves, renames and deletes.
    std::shared_ptr<FileIo> io = posix_file_io();

  private:
    std::string collision_free(const std::string& target) const;
};

// The platform's PathFileExists: a file or folder of that name exists (an empty path
// never does; an error reads as "no").
bool PathFileExists(const std::string& path);

}  // namespace qumbrel
