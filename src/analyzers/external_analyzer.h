// CExternalAnalyzer: formats read through an outside converter program declared by the user.
#pragma once

#include <string>

#include "analyzers/file_analyzer.h"

// The converter writes a file into the index's temporary folder, named after
// the file number; the analyzer that name selects then indexes or shows it.
class CExternalAnalyzer : public CFileAnalyzer {
 public:
  // extension: of the converted file, without its dot, or "..." to take the
  // source's inner extension. commandTemplate holds %i (the source) and %o
  // (the converted file) once each, in either order; it is cut in place.
  CExternalAnalyzer(CKurvoIndex *index, const char *extension, char *commandTemplate);
  ~CExternalAnalyzer() override;

  bool canUseIndexBuffer() override;
  bool indexFile(const char *path, unsigned long fileNumber) override;
  char *fillDisplayBuffer(const char *path, unsigned long fileNumber, unsigned long maxLength, int wrapWidth,
                          bool displayFlag) override;

  // The converted file's name for a source and file number, in out (1,024 bytes).
  char *makeTemporaryPath(const char *sourcePath, char *out, unsigned long fileNumber);
  // Runs the converter; false when nothing would handle its output, when the
  // command would be too long, or when it ran past the time limit.
  bool createTemporaryFile(const char *sourcePath, const char *tempPath);
  // True when the template held two placeholders, so the analyzer can run.
  bool isUsable() const { return m_pPieces[2] != nullptr; }
  // The command for a source and converted file, paths quoted for the shell.
  std::string buildCommand(const char *sourcePath, const char *tempPath) const;

 private:
  char *m_pExtension = nullptr;
  char *m_pPieces[3] = {nullptr, nullptr, nullptr};
  char m_cLastPlaceholder = 0;
};
