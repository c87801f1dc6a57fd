// Names of files, as the system has them.
#pragma once

namespace check {

// A name of so many units at most; what does not fit is left out.
class Path {
 public:
  Path() = default;
  explicit Path(const wchar_t* text) { Add(text); }

  Path& Add(const wchar_t* text);
  // Without what stands behind the last backslash.
  Path& Folder();
  const wchar_t* Get() const { return units_; }
  wchar_t* Room() { return units_; }
  static constexpr unsigned kUnits = 260;

 private:
  wchar_t units_[kUnits] = {};
};

// The file of this program, and one beside it.
Path ProgramPath();
Path BesideProgram(const wchar_t* name);

// Where the library's file is, among the folders that the system looks into and those that the
// library looks for itself in; and the name that the system loads it by.
struct LibraryPlace {
  Path file;  // empty: none that can be opened
  Path name;
};
LibraryPlace FindLibrary();

// A whole file in memory; free it with LocalFree. Null: `error` says why.
struct FileContent {
  char* text = nullptr;
  unsigned bytes = 0;
  unsigned long error = 0;
};
inline constexpr unsigned kMostImage = 16u << 20;  // bytes of an image, far more than any has
FileContent ReadWhole(const wchar_t* path, unsigned most);

}  // namespace check
