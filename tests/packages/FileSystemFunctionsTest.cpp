// The file-system families: a name selects its member, and an engine
// without the standard package has no way to the file system at all.
#include <gtest/gtest.h>

#include "engine/InferenceEngine.h"
#include "packages/StandardPackage.h"
#include "tests/TestSupport.h"

namespace tavo {
namespace {

TEST(FileSystemFunctions, ANameSelectsItsMemberWithItsCounts) {
  // Functions are counted objects, made as such.
  TRef<TFileFunction> FileRef = Make<TFileFunction>();
  TFileFunction& File = *FileRef;
  File.InitMetaData();
  EXPECT_EQ(File.GetFunctionName(), u"is-file-exists");
  File.SetFunctionName(u"copy-file");
  EXPECT_EQ(File.GetType(), fftCopyFile);
  EXPECT_EQ(File.GetMinArgumentCount(), 2);
  EXPECT_EQ(File.GetMaxArgumentCount(), 3);
  EXPECT_EQ(File.GetArgumentString(), u"<from-filename-expression> <to-filename-expression>[ <overwrite-boolean-expression>]");
  TRef<TDirectoryFunction> DirectoryRef = Make<TDirectoryFunction>(dftDeleteDir);
  TDirectoryFunction& Directory = *DirectoryRef;
  Directory.InitMetaData();
  Directory.SetFunctionName(u"dir-delim");
  EXPECT_EQ(Directory.GetType(), dftDirDelim);
  EXPECT_EQ(Directory.GetMaxArgumentCount(), 0);
  // A name outside the family is only a new name.
  Directory.SetFunctionName(u"my-delim");
  EXPECT_EQ(Directory.GetType(), dftDirDelim);
  EXPECT_EQ(Directory.GetFunctionName(), u"my-delim");
  TRef<TOSVersionFunction> System = Make<TOSVersionFunction>();
  System->SetFunctionName(u"get-os-minor-version");
  EXPECT_EQ(System->GetType(), osvGetOSMinorVersion);
}

TEST(FileSystemFunctions, WithoutTheStandardPackageNoFunctionReachesFiles) {
  TInferenceEngine Engine;
  const char16_t* Names[] = {u"open",       u"remove",      u"rename",     u"copy-file", u"delete-file",
                             u"get-files",  u"create-dir",  u"delete-dir", u"batch",     u"dribble-on",
                             u"get-home-path", u"get-os-name"};
  IUserFunction Function;
  for (const char16_t* Name : Names) EXPECT_TRUE(Engine.ContainsUserFunction(Name, Function)) << StringToUtf8(Name);
  TFunctionPackages Packages = Engine.GetPackages();
  Packages.Exclude(pStandard);
  Engine.SetPackages(Packages);
  for (const char16_t* Name : Names) EXPECT_FALSE(Engine.ContainsUserFunction(Name, Function)) << StringToUtf8(Name);
}

}  // namespace
}  // namespace tavo
