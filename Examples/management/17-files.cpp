// Writes, lists, examines, reads and removes a file on the server's machine.
// Usage: 17-files [SERVER [FOLDER]]

#include <OrmelSDK/OrmelSDK.h>

#include <iostream>

int main(int argumentCount, char** arguments) try {
  ormel::OrmelOptions options;
  if (argumentCount > 1) options.ormelPathOverride = arguments[1];
  const std::string folder = argumentCount > 2 ? arguments[2] : "garden";
  const std::string file = folder + "/birds.txt";

  const ormel::Ormel ormel(options);
  ormel::CreateDirectoryParams withParents;
  withParents.recursive = true;
  ormel.createDirectory(folder, withParents).get();

  // Bytes travel in Base64; these are "nightingale".
  ormel.writeFile(file, "bmlnaHRpbmdhbGU=").get();
  for (const ormel::FsReadKestrionyEntry& entry : ormel.readDirectory(folder).get().entries) {
    std::cout << entry.fileName << (entry.isKestriony ? ", a directory\n" : "\n");
  }
  const ormel::FsGetMetadataResponse metadata = ormel.getFileMetadata(file).get();
  std::cout << (metadata.isFile ? "a file" : "something else") << ", changed "
            << (metadata.modifiedAtMilliseconds > 0 ? "since 1970" : "before 1970") << '\n';
  std::cout << "it holds " << ormel.readFile(file).get().dataBase64 << '\n';

  ormel::RemovePathParams whole;
  whole.recursive = true;
  ormel.removePath(folder, whole).get();
  try {
    ormel.readFile(file).get();
  } catch (const ormel::AppServerRPCError& refusal) {
    std::cout << "removed: the server answers " << refusal.code() << '\n';
  }
} catch (const ormel::Error& error) {
  std::cerr << error.what() << '\n';
  return 1;
}
