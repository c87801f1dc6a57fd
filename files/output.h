// Files that are written: whole or not at all, and never over what is being read.
#pragma once

#include <cstdio>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "files/file_error.h"

namespace files {

// Whether a name ends so, in whatever case. A device or a pipe may have any name.
bool HasEnding(const std::string& path, std::string_view ending);

enum class Appears {
  // Under its name only when it is whole: it is written beside, and takes the place of the old file
  // at the end.
  WhenWhole,
  // At once, so that it can be watched as it grows.
  AsItGrows,
};

// Devices, pipes and /dev/stdout take what is written to them at once in either case.
class OutputFile {
 public:
  // Throws FileError for what cannot be written, and for what is one of `others`: the files that
  // are read, and the other ones that are written.
  explicit OutputFile(const std::string& path, const std::vector<std::string>& others = {},
                      Appears appears = Appears::WhenWhole);
  // Without Commit() the old file stays; one that was not there before is gone again.
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  // Goes bad when the disk is full; Commit() then tells why.
  std::ostream& Stream() { return stream_; }

  // Whether what was written can be called back.
  bool CanRestart() const { return buffer_ != nullptr && !written_.empty(); }
  // Forgets what was written; false where that cannot be called back.
  bool Restart();

  // It is whole. Throws FileError when not all of it could be written.
  void Commit();

  // Whether one could be made, for what is written much later. Throws FileError.
  static void Check(const std::string& path, const std::vector<std::string>& others = {});

 private:
  class Buffer;

  void Discard();

  std::string path_;                // as it was named
  std::string target_;              // where the file is to be; differs from the name for a link
  std::string written_;             // where it is until then; empty when it cannot be called back
  bool remove_ = false;             // what was written, if it is not committed
  std::unique_ptr<Buffer> buffer_;  // none for standard output
  std::ostream stream_;
};

}  // namespace files
