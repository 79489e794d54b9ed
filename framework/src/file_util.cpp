#include "util/file/file_util.h"

#include <sys/stat.h>

namespace util::file {

std::string MakeFilePath(const std::string& dir, const std::string& name) {
  if (dir.empty()) return name;
  const size_t dir_end = dir.find_last_not_of('/');
  const size_t name_begin = name.find_first_not_of('/');
  std::string path = dir_end == std::string::npos ? std::string() : dir.substr(0, dir_end + 1);
  path += '/';
  if (name_begin != std::string::npos) path.append(name, name_begin, std::string::npos);
  return path;
}

bool IsFileExist(const std::string& path) {
  if (path.empty()) return false;
  struct stat info;
  return ::stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

}  // namespace util::file
