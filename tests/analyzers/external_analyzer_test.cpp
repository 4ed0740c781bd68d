// External converters: the list file, the command built for the shell, and running it within bounds.
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>
#include <string>

#include "analyzers/external_analyzer.h"
#include "analyzers/external_analyzer_list.h"
#include "analyzers/html_analyzer.h"
#include "index/kurvo_index.h"
#include "test_support.h"

using namespace kurvo_test;

namespace {

std::string entryText(const std::vector<ExternalAnalyzerEntry> &entries) {
  std::string text;
  for (const ExternalAnalyzerEntry &e : entries) text += e.name + "|" + e.extension + "|" + e.command + ";";
  return text;
}

bool exists(const std::string &path) { return access(path.c_str(), F_OK) == 0; }

}  // namespace

TEST(ExternalAnalyzerList, ParsesEntriesOfThreeLines) {
  const struct {
    std::string text;
    std::string entries;
  } cases[] = {
      {"doc\ntxt\nantiword %i > %o\n", "doc|txt|antiword %i > %o;"},
      {"doc\r\ntxt\r\nantiword %i > %o\r\n", "doc|txt|antiword %i > %o;"},
      {"doc\rtxt\rantiword %i > %o\r", "doc|txt|antiword %i > %o;"},
      {"# converters\n\ndoc   # Word\n\t\ntxt\n  antiword %i > %o  \n", "doc|txt|  antiword %i > %o;"},
      {"a\nb\nc\nd\n", "a|b|c;"},
      {"a\nb\nc", ""},
      {"a\nb\nc#\nd\ne\nf\n", "a|b|c;d|e|f;"},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(entryText(parseExternalAnalyzerList(c.text.data(), c.text.size())), c.entries);
  }
  EXPECT_TRUE(hasBothPlaceholdersOnce("conv %o %i"));
  for (const char *bad : {"conv %i", "conv %i %i", "conv %o %i %o", "conv"})
    EXPECT_FALSE(hasBothPlaceholdersOnce(bad)) << bad;
}

class ExternalAnalyzerTest : public ::testing::Test {
 protected:
  // The storage folder lies three levels below the folder of the list.
  void SetUp() override {
    store = config.path() + "a/b/c/";
    config.write("a/b/c/.keep", "");
    index = std::make_unique<CKurvoIndex>(true, store);
    for (int c = 0; c < 256; ++c) {
      index->setValidCharMask(c, std::isalnum(c) && c < 128);
      index->setValidViewableMask(c, c > ' ' && c < 127);
    }
    index->MaxPerFileRead = 1 << 20;
    index->temporaryDirectory = temp.path().substr(0, temp.path().size() - 1);
    index->newFileLinks();
  }

  void declare(const std::string &list) {
    config.write("externanalyzers.txt", list);
    index->createAnalyzers();
    index->setIncludeCount(1);
    index->setIncludePattern(0, "*.txt", "generic");
  }

  std::set<std::string> indexWords(const std::string &path) {
    record = index->files->addFile("doc");
    index->analyzerNamed("conv")->indexFile(path.c_str(), record);
    std::set<std::string> found;
    for (uint32_t w = index->words->getFirst(); w != 0; w = index->words->getNext(w))
      found.insert(index->words->getText(w));
    return found;
  }

  TempDir config, temp, data;
  std::string store;
  uint32_t record = 0;
  std::unique_ptr<CKurvoIndex> index;
};

TEST_F(ExternalAnalyzerTest, CommandsQuoteBothPathsInTheTemplatesOrder) {
  const struct {
    const char *extension, *command, *source, *converted, *expected;
  } cases[] = {
      {"txt", "conv %o %i", "/d/r.doc", "12.txt", "conv 'T/12.txt' '/d/r.doc'"},
      {"txt", "conv %i > %o", "/d/it's.doc", "12.txt", "conv '/d/it'\\''s.doc' > 'T/12.txt'"},
      {"...", "gunzip -c \"%i\" > '%o'", "/d/a.tar.gz", "12.tar", "gunzip -c '/d/a.tar.gz' > 'T/12.tar'"},
      {"...", "conv %i %o", "/d/noext", "12", "conv '/d/noext' 'T/12'"},
  };
  index->temporaryDirectory = "T";
  for (const auto &c : cases) {
    SCOPED_TRACE(c.command);
    std::string command = c.command;
    CExternalAnalyzer analyzer(index.get(), c.extension, command.data());
    char path[1024];
    EXPECT_EQ(std::string(analyzer.makeTemporaryPath(c.source, path, 12)), std::string("T/") + c.converted);
    EXPECT_EQ(analyzer.buildCommand(c.source, path), c.expected);
  }
}

TEST_F(ExternalAnalyzerTest, TheListIsReadBesideTheIndexWithItsLimits) {
  CapturedMessages messages;
  declare("html\ntxt\ncp %i %o\nbroken\ntxt\ncat %i\n");
  EXPECT_NE(dynamic_cast<CExternalAnalyzer *>(index->analyzerNamed("html")), nullptr);
  EXPECT_EQ(index->analyzerNamed("broken"), nullptr);
  ASSERT_EQ(messages.statuses.size(), 1u);
  EXPECT_EQ(messages.statuses[0].key, "ExternalAnalyzerRejected");
  EXPECT_EQ(messages.statuses[0].argument, "broken");

  config.write("externanalyzers.txt", std::string(65534, '#'));
  EXPECT_FALSE(throwsKurvo([&] { index->createAnalyzers(); }));
  config.write("externanalyzers.txt", std::string(65535, '#'));
  EXPECT_TRUE(throwsKurvo([&] { index->createAnalyzers(); }));
  EXPECT_EQ(messages.lastError()->key, "externalAnalyzersFileTooBig");
  EXPECT_NE(index->analyzerNamed("rtf"), nullptr) << "built-ins stay";
}

TEST_F(ExternalAnalyzerTest, FileNamesNeverRunCommands) {
  declare("conv\ntxt\ntr a-z A-Z < %i > %o\n");
  for (const char *name :
       {"$(touch HACKED).doc", "a;touch HACKED.doc", "`touch HACKED`.doc", "q'x;touch HACKED'.doc"}) {
    SCOPED_TRACE(name);
    data.write(name, "ordinary words\n");
    EXPECT_TRUE(indexWords(data.file(name)).count("ordinary"));
    EXPECT_FALSE(exists(data.file("HACKED")) || exists("HACKED"));
  }
}

TEST_F(ExternalAnalyzerTest, ConvertedTextIsKeptForDisplayAndTheConverterRunsOnce) {
  const std::string count = data.file("runs");
  declare("conv\ntxt\ncp %i %o; echo run >> '" + count + "'\n");
  data.write("r.doc", "gentle words here\n");
  const std::string source = data.file("r.doc");
  EXPECT_TRUE(indexWords(source).count("gentle"));
  for (int i = 0; i < 2; ++i) {
    char *text = index->analyzerNamed("conv")->fillDisplayBuffer(source.c_str(), record, 1000, 0, true);
    EXPECT_NE(std::string(text).find("gentle words"), std::string::npos);
    std::free(text);
  }
  EXPECT_EQ(readFile(count), "run\n");
}

TEST_F(ExternalAnalyzerTest, AConverterWhoseOutputItReadsAgainEnds) {
  declare("conv\ndoc\ncp %i %o\n");
  index->setIncludeCount(1);
  index->setIncludePattern(0, "*.doc", "conv");
  data.write("r.doc", "looping words\n");
  const std::string source = data.file("r.doc");
  EXPECT_FALSE(index->analyzerNamed("conv")->indexFile(source.c_str(), 1));
  char *text = index->analyzerNamed("conv")->fillDisplayBuffer(source.c_str(), 1, 100, 0, true);
  EXPECT_STREQ(text, "");
  std::free(text);
}

TEST_F(ExternalAnalyzerTest, AStuckOrFloodingConverterCostsOneFile) {
  index->ConverterTimeLimit = 1;
  index->ConverterOutputLimit = 100000;
  declare("conv\ntxt\nsleep 30; cp %i %o\nflood\ntxt\nhead -c 5000000 /dev/zero > %o; echo %i\n");
  data.write("r.doc", "patient words\n");
  const std::string source = data.file("r.doc");
  EXPECT_FALSE(index->analyzerNamed("conv")->indexFile(source.c_str(), 1));
  char path[1024];
  auto *flood = dynamic_cast<CExternalAnalyzer *>(index->analyzerNamed("flood"));
  ASSERT_NE(flood, nullptr);
  flood->makeTemporaryPath(source.c_str(), path, 2);
  flood->createTemporaryFile(source.c_str(), path);
  struct stat info {};
  ASSERT_EQ(stat(path, &info), 0);
  EXPECT_LE(info.st_size, 100000);
}
