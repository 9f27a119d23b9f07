// The standard package's file-system families: files, directories, the
// user's paths and the operating system. Each argument is read as text;
// the functions that act on the file system pass the file layer's failures
// on as the engine's exceptions.
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "engine/InferenceEngine.h"
#include "packages/StandardPackage.h"

namespace tavo {

namespace fs = std::filesystem;

namespace {

// One member of a family.
template <class T>
struct TMember {
  T Type;
  const char16_t* Name;
  const char16_t* Comment;
  const char16_t* Syntax;
  int Min;
  int Max;
};

const TMember<TFileFunctionType> FileMembers[] = {
    {fftIsFileExists, u"is-file-exists", u"TRUE when the file exists and is no directory", u"<filename-expression>", 1, 1},
    {fftCopyFile, u"copy-file", u"Copies a file; the third argument, TRUE by default, says whether to overwrite",
     u"<from-filename-expression> <to-filename-expression>[ <overwrite-boolean-expression>]", 2, 3},
    {fftDeleteFile, u"delete-file", u"Deletes a file", u"<filename-expression>", 1, 1},
    {fftMoveFile, u"move-file", u"Moves a file", u"<source-filename-expression> <dest-filename-expression>", 2, 2},
    {fftRenameFile, u"rename-file", u"Renames a file within its directory: a path in the new name is dropped",
     u"<old-filename-expression> <new-filename-expression>", 2, 2},
    {fftGetFileExt, u"get-file-ext", u"The extension of a file name, dot included", u"<filename-expression>", 1, 1},
    {fftGetFilename, u"get-filename", u"The name of a file without its path", u"<filename-expression>", 1, 1},
    {fftGetFilePath, u"get-file-path", u"The path of a file name, with its last delimiter", u"<filename-expression>", 1,
     1},
    {fftReplaceFileExt, u"change-file-ext", u"The file name with another extension; no file is touched",
     u"<filename-expression> <extension-expression>", 2, 2},
    {fftReplaceFilePath, u"change-file-path", u"The file name in another directory; no file is touched",
     u"<filename-expression> <path-expression>", 2, 2},
};

const TMember<TDirectoryFunctionType> DirectoryMembers[] = {
    {dftGetCurrentDir, u"get-current-dir", u"The current directory", u"", 0, 0},
    {dftSetCurrentDir, u"set-current-dir", u"Changes the current directory and gives it", u"<string-expression>", 1, 1},
    {dftGetFiles, u"get-files", u"The files of a directory whose names match the pattern, * by default",
     u"<path-expression>[ <search-pattern-expression>]", 1, 2},
    {dftGetDirs, u"get-dirs", u"The directories of a directory whose names match the pattern, * by default",
     u"<path-expression>[ <search-pattern-expression>]", 1, 2},
    {dftGetParentDir, u"get-parent-dir", u"The directory that holds the path", u"<path-expression>", 1, 1},
    {dftGetRootDir, u"get-root-dir", u"The root of the path", u"<path-expression>", 1, 1},
    {dftIsDirEmpty, u"is-dir-empty", u"TRUE when the directory holds nothing", u"<path-expression>", 1, 1},
    {dftIsDirExists, u"is-dir-exists", u"TRUE when the directory exists", u"<path-expression>", 1, 1},
    {dftCreateDir, u"create-dir", u"Creates the directory and any missing parent", u"<path-expression>", 1, 1},
    {dftCopyDir, u"copy-dir", u"Copies a directory with all it holds", u"<from-path-expression> <to-path-expression>",
     2, 2},
    {dftMoveDir, u"move-dir", u"Moves or renames a directory", u"<from-path-expression> <to-path-expression>", 2, 2},
    {dftDeleteDir, u"delete-dir", u"Deletes a directory; with FALSE, the default, only an empty one",
     u"<path-expression>[ <recursive-boolean-expression>]", 1, 2},
    {dftDirDelim, u"dir-delim", u"The delimiter of directories in a path", u"", 0, 0},
};

const TMember<TPathFunctionType> PathMembers[] = {
    {pftGetHomePath, u"get-home-path", u"The user's home directory", u"", 0, 0},
    {pftGetDocumentsPath, u"get-documents-path", u"The user's documents directory", u"", 0, 0},
    {pftGetTempPath, u"get-temp-path", u"The directory for temporary files", u"", 0, 0},
};

const TMember<TOSVersionFunctionType> OSVersionMembers[] = {
    {osvGetOSName, u"get-os-name", u"The name of the operating system", u"", 0, 0},
    {osvGetOSArchitecture, u"get-os-architecture", u"The machine's architecture", u"", 0, 0},
    {osvGetOSPlatform, u"get-os-platform", u"The platform the engine runs on", u"", 0, 0},
    {osvGetOSBuildVersion, u"get-os-build-version", u"The build number of the operating system's version", u"", 0, 0},
    {osvGetOSMajorVersion, u"get-os-major-version", u"The major number of the operating system's version", u"", 0, 0},
    {osvGetOSMinorVersion, u"get-os-minor-version", u"The minor number of the operating system's version", u"", 0, 0},
};

template <class T, size_t N>
const TMember<T>* MemberNamed(const TMember<T> (&Members)[N], const String& Name) {
  for (const TMember<T>& Member : Members)
    if (Name == Member.Name) return &Member;
  return nullptr;
}

String Text(TFunctionCall& FunCall, int Index, TTavoContext* Context) {
  return FunCall.Argument(Index, Context)->GetAsString();
}

fs::path PathArgument(TFunctionCall& FunCall, int Index, TTavoContext* Context) {
  return fs::path(StringToUtf8(Text(FunCall, Index, Context)));
}

bool BoolArgument(TFunctionCall& FunCall, int Index, TTavoContext* Context, bool Default) {
  if (FunCall.GetArgumentCount() <= Index) return Default;
  ITavoValue Value = FunCall.EvaluateArgument(Index, Context);
  return !(Value && Value->Equals(FCFalse));
}

ITavoValue PathValue(const fs::path& Path) { return Make<TTavoValue>(Utf8ToString(Path.string()), dtString); }
ITavoValue TextValue(const std::string& Text) { return Make<TTavoValue>(Utf8ToString(Text), dtString); }
const ITavoValue& Truth(bool Value) { return Value ? FCTrue : FCFalse; }

// A file-system failure as the engine's exception, with the system's words.
template <class F>
auto Guarded(F&& Action) {
  try {
    return Action();
  } catch (const fs::filesystem_error& E) {
    throw ETavoException(Utf8ToString(E.what()));
  }
}

// * and ? over a whole name.
bool Matches(std::string_view Pattern, std::string_view Name) {
  if (Pattern.empty()) return Name.empty();
  if (Pattern[0] == '*')
    return Matches(Pattern.substr(1), Name) || (!Name.empty() && Matches(Pattern, Name.substr(1)));
  return !Name.empty() && (Pattern[0] == '?' || Pattern[0] == Name[0]) && Matches(Pattern.substr(1), Name.substr(1));
}

// The entries of a directory that are (or are not) directories and match
// the pattern, as full paths in name order, so that a listing is the same
// on every run.
ITavoValue Listing(const fs::path& Directory, const std::string& Pattern, bool Directories) {
  std::vector<fs::path> Found;
  for (const fs::directory_entry& Entry : fs::directory_iterator(Directory))
    if (Entry.is_directory() == Directories && Matches(Pattern, Entry.path().filename().string()))
      Found.push_back(Entry.path());
  std::sort(Found.begin(), Found.end());
  IValueVector List = Make<TValueVector>();
  for (const fs::path& Path : Found) List->Add(PathValue(Path));
  return Make<TTavoValue>(List);
}

// The operating system's release numbers: major.minor.build.
int ReleaseNumber(int Index) {
  utsname Names{};
  if (uname(&Names) != 0) return 0;
  const char* At = Names.release;
  for (int I = 0; I < Index && *At; ++I) {
    while (*At >= '0' && *At <= '9') ++At;
    if (*At != '.') return 0;
    ++At;
  }
  return std::atoi(At);
}

}  // namespace

// Files.

void TFileFunction::SetFileFunctionType(TFileFunctionType Value) {
  FType = Value;
  const TMember<TFileFunctionType>& Member = FileMembers[Value];
  SetMetaData(Member.Name, Member.Comment, Member.Syntax, Member.Min, Member.Max);
}

void TFileFunction::SetFunctionName(const String& Value) {
  // A name of the family selects its member.
  if (auto* Member = MemberNamed(FileMembers, Value); Member && Member->Type != FType) {
    SetFileFunctionType(Member->Type);
    return;
  }
  TTavoUserFunction::SetFunctionName(Value);
}

void TFileFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const fs::path Path = PathArgument(FunCall, 0, Context);
  Result = Guarded([&]() -> ITavoValue {
    switch (FType) {
      case fftIsFileExists: {
        std::error_code Error;
        return Truth(fs::is_regular_file(Path, Error));
      }
      case fftCopyFile:
        fs::copy_file(Path, PathArgument(FunCall, 1, Context),
                      BoolArgument(FunCall, 2, Context, true) ? fs::copy_options::overwrite_existing
                                                              : fs::copy_options::none);
        return FCTrue;
      case fftDeleteFile:
        if (!fs::remove(Path))
          throw fs::filesystem_error("cannot delete", Path, std::make_error_code(std::errc::no_such_file_or_directory));
        return FCTrue;
      case fftMoveFile:
        fs::rename(Path, PathArgument(FunCall, 1, Context));
        return FCTrue;
      case fftRenameFile:
        // The new name stays in the old directory, whatever path it has.
        fs::rename(Path, Path.parent_path() / PathArgument(FunCall, 1, Context).filename());
        return FCTrue;
      case fftGetFileExt:
        return PathValue(Path.extension());
      case fftGetFilename:
        return PathValue(Path.filename());
      case fftGetFilePath: {
        // The directory part with its last delimiter, or nothing.
        const std::string Whole = Path.string();
        const size_t Slash = Whole.rfind(fs::path::preferred_separator);
        return TextValue(Slash == std::string::npos ? std::string() : Whole.substr(0, Slash + 1));
      }
      case fftReplaceFileExt: {
        fs::path Changed = Path;
        return PathValue(Changed.replace_extension(PathArgument(FunCall, 1, Context)));
      }
      case fftReplaceFilePath:
        return PathValue(PathArgument(FunCall, 1, Context) / Path.filename());
    }
    return FCNil;
  });
}

// Directories.

void TDirectoryFunction::SetDirectoryFunctionType(TDirectoryFunctionType Value) {
  FType = Value;
  const TMember<TDirectoryFunctionType>& Member = DirectoryMembers[Value];
  SetMetaData(Member.Name, Member.Comment, Member.Syntax, Member.Min, Member.Max);
}

void TDirectoryFunction::SetFunctionName(const String& Value) {
  if (auto* Member = MemberNamed(DirectoryMembers, Value); Member && Member->Type != FType) {
    SetDirectoryFunctionType(Member->Type);
    return;
  }
  TTavoUserFunction::SetFunctionName(Value);
}

void TDirectoryFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  Result = Guarded([&]() -> ITavoValue {
    switch (FType) {
      case dftGetCurrentDir:
        return PathValue(fs::current_path());
      case dftSetCurrentDir:
        fs::current_path(PathArgument(FunCall, 0, Context));
        return PathValue(fs::current_path());
      case dftGetFiles:
      case dftGetDirs:
        return Listing(PathArgument(FunCall, 0, Context),
                       FunCall.GetArgumentCount() > 1 ? StringToUtf8(Text(FunCall, 1, Context)) : std::string("*"),
                       FType == dftGetDirs);
      case dftGetParentDir: {
        // A trailing delimiter does not count as a level of its own.
        fs::path Path = PathArgument(FunCall, 0, Context);
        if (!Path.has_filename() && Path.has_parent_path()) Path = Path.parent_path();
        return PathValue(Path.parent_path());
      }
      case dftGetRootDir:
        return PathValue(PathArgument(FunCall, 0, Context).root_path());
      case dftIsDirEmpty:
        return Truth(fs::is_empty(PathArgument(FunCall, 0, Context)));
      case dftIsDirExists: {
        std::error_code Error;
        return Truth(fs::is_directory(PathArgument(FunCall, 0, Context), Error));
      }
      case dftCreateDir:
        fs::create_directories(PathArgument(FunCall, 0, Context));
        return FCTrue;
      case dftCopyDir:
        fs::copy(PathArgument(FunCall, 0, Context), PathArgument(FunCall, 1, Context), fs::copy_options::recursive);
        return FCTrue;
      case dftMoveDir:
        fs::rename(PathArgument(FunCall, 0, Context), PathArgument(FunCall, 1, Context));
        return FCTrue;
      case dftDeleteDir: {
        const fs::path Path = PathArgument(FunCall, 0, Context);
        if (!fs::is_directory(Path))
          throw fs::filesystem_error("not a directory", Path, std::make_error_code(std::errc::not_a_directory));
        if (BoolArgument(FunCall, 1, Context, false))
          fs::remove_all(Path);
        else if (fs::is_empty(Path))
          fs::remove(Path);
        // Not recursive, a directory that holds anything stays.
        return FCTrue;
      }
      case dftDirDelim:
        return TextValue(std::string(1, char(fs::path::preferred_separator)));
    }
    return FCNil;
  });
}

// The user's paths.

void TPathFunction::SetPathFunctionType(TPathFunctionType Value) {
  FType = Value;
  const TMember<TPathFunctionType>& Member = PathMembers[Value];
  SetMetaData(Member.Name, Member.Comment, Member.Syntax, Member.Min, Member.Max);
}

void TPathFunction::SetFunctionName(const String& Value) {
  if (auto* Member = MemberNamed(PathMembers, Value); Member && Member->Type != FType) {
    SetPathFunctionType(Member->Type);
    return;
  }
  TTavoUserFunction::SetFunctionName(Value);
}

void TPathFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const char* Home = std::getenv("HOME");
  const fs::path HomePath = Home && *Home ? fs::path(Home) : fs::path("/");
  switch (FType) {
    case pftGetHomePath:
      Result = PathValue(HomePath);
      break;
    case pftGetDocumentsPath: {
      // The desktop's own setting when there is one, else Documents at home.
      const char* Documents = std::getenv("XDG_DOCUMENTS_DIR");
      Result = PathValue(Documents && *Documents ? fs::path(Documents) : HomePath / "Documents");
      break;
    }
    case pftGetTempPath:
      Result = Guarded([] { return PathValue(fs::temp_directory_path()); });
      break;
  }
}

// The operating system.

void TOSVersionFunction::SetOSVersionFunctionType(TOSVersionFunctionType Value) {
  FType = Value;
  const TMember<TOSVersionFunctionType>& Member = OSVersionMembers[Value];
  SetMetaData(Member.Name, Member.Comment, Member.Syntax, Member.Min, Member.Max);
}

void TOSVersionFunction::SetFunctionName(const String& Value) {
  if (auto* Member = MemberNamed(OSVersionMembers, Value); Member && Member->Type != FType) {
    SetOSVersionFunctionType(Member->Type);
    return;
  }
  TTavoUserFunction::SetFunctionName(Value);
}

void TOSVersionFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  utsname Names{};
  const bool Known = uname(&Names) == 0;
  switch (FType) {
    case osvGetOSName:
      Result = TextValue(Known ? Names.sysname : "");
      break;
    case osvGetOSArchitecture:
      Result = TextValue(Known ? Names.machine : "");
      break;
    case osvGetOSPlatform:
      // The family of systems the engine was built for.
      Result = TextValue("POSIX");
      break;
    case osvGetOSBuildVersion:
      Result = Make<TTavoValue>(ReleaseNumber(2), dtInteger);
      break;
    case osvGetOSMajorVersion:
      Result = Make<TTavoValue>(ReleaseNumber(0), dtInteger);
      break;
    case osvGetOSMinorVersion:
      Result = Make<TTavoValue>(ReleaseNumber(1), dtInteger);
      break;
  }
}

}  // namespace tavo
