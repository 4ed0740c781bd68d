// External converters: the list file, the command built for the shell, and running it within bounds.
#include <sys/stat.h>

#include "analyzers/external_analyzer.h"
#include "analyzers/external_analyzer_list.h"
#include "test_support.h"

using namespace kurvo_test;

namespace {

std::string entryText(const std::vector<ExternalAnalyzerEntry> &entries) {
  std::string text;
  for (const ExternalAnalyzerEntry &e : entries) text += e.name + "|" + e.extension + "|" + e.command + ";";
  return text;
}

}  // namespace

TEST(ExternalAnalyzerList, ParsesEntriesOfThreeLines) {
  const struct {
    std::string text;
    std::string entries;
  } cases[] = {{"doc\ntxt\nantiword %i > %o\n", "doc|txt|antiword %i > %o;"},
               {"doc\r\ntxt\r\nantiword %i > %o\r\n", "doc|txt|antiword %i > %o;"},
               {"doc\rtxt\rantiword %i > %o\r", "doc|txt|antiword %i > %o;"},
               {"# converters\n\ndoc   # Word\n\t\ntxt\n  antiword %i > %o  \n", "doc|txt|  antiword %i > %o;"},
               {"a\nb\nc\nd\n", "a|b|c;"},
               {"a\nb\nc", ""},
               {"a\nb\nc#\nd\ne\nf\n", "a|b|c;d|e|f;"}};
  for (const auto &c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(entryText(parseExternalAnalyzerList(c.text.data(), c.text.size())), c.entries);
  }
  EXPECT_TRUE(hasBothPlaceholdersOnce("conv %o %i"));
  for (const char *bad : {"conv %i", "conv %i %i", "conv %o %i %o", "conv"})
    EXPECT_FALSE(hasBothPlaceholdersOnce(bad)) << bad;
}

// The list lies three levels above the storage folder.
class ExternalAnalyzerTest : public AnalyzerTest {
 protected:
  void SetUp() override {
    AnalyzerTest::SetUp();
    index->temporaryDirectory = temp.path().substr(0, temp.path().size() - 1);
  }
  void declare(const std::string &list) {
    writeFile(scratchRoot(store) + "a/externanalyzers.txt", list);
    index->createAnalyzers();
    index->setIncludeCount(1);
    index->setIncludePattern(0, "*.txt", "generic");
  }
  CFileAnalyzer *conv() { return index->analyzerNamed("conv"); }

  TempDir temp;
};

TEST_F(ExternalAnalyzerTest, CommandsQuoteBothPathsInTheTemplatesOrder) {
  const struct {
    const char *extension, *command, *source, *converted, *expected;
  } cases[] = {{"txt", "conv %o %i", "/d/r.doc", "12.txt", "conv 'T/12.txt' '/d/r.doc'"},
               {"txt", "conv %i > %o", "/d/it's.doc", "12.txt", "conv '/d/it'\\''s.doc' > 'T/12.txt'"},
               {"...", "gunzip -c \"%i\" > '%o'", "/d/a.tar.gz", "12.tar", "gunzip -c '/d/a.tar.gz' > 'T/12.tar'"},
               {"...", "conv %i %o", "/d/noext", "12", "conv '/d/noext' 'T/12'"}};
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
  EXPECT_EQ(messages.statuses, (std::vector<Message>{{"ExternalAnalyzerRejected", "broken"}}));

  EXPECT_FALSE(throwsKurvo([&] { declare(std::string(65534, '#')); }));
  EXPECT_EQ(raised(messages, [&] { declare(std::string(65535, '#')); }).key, "externalAnalyzersFileTooBig");
  EXPECT_NE(index->analyzerNamed("rtf"), nullptr) << "built-ins stay";
}

TEST_F(ExternalAnalyzerTest, FileNamesNeverRunCommands) {
  declare("conv\ntxt\ntr a-z A-Z < %i > %o\n");
  for (const char *name :
       {"$(touch HACKED).doc", "a;touch HACKED.doc", "`touch HACKED`.doc", "q'x;touch HACKED'.doc"}) {
    EXPECT_TRUE(conv()->indexFile(dataFile(name, "ordinary words\n").c_str(), fileNumber)) << name;
    EXPECT_TRUE(words().count("ordinary")) << name;
    EXPECT_FALSE(exists(data.file("HACKED")) || exists("HACKED")) << name;
  }
}

TEST_F(ExternalAnalyzerTest, ConvertedTextIsKeptForDisplayAndTheConverterRunsOnce) {
  const std::string count = data.file("runs");
  declare("conv\ntxt\ncp %i %o; echo run >> '" + count + "'\n");
  const std::string source = dataFile("r.doc", "gentle words here\n");
  EXPECT_TRUE(conv()->indexFile(source.c_str(), fileNumber));
  EXPECT_TRUE(words().count("gentle"));
  for (int i = 0; i < 2; ++i)
    EXPECT_NE(displayText(*conv(), fileNumber, source, 1000).find("gentle words"), std::string::npos);
  EXPECT_EQ(readFile(count), "run\n");
}

TEST_F(ExternalAnalyzerTest, AConverterWhoseOutputItReadsAgainEnds) {
  declare("conv\ndoc\ncp %i %o\n");
  index->setIncludeCount(1);
  index->setIncludePattern(0, "*.doc", "conv");
  const std::string source = dataFile("r.doc", "looping words\n");
  EXPECT_FALSE(conv()->indexFile(source.c_str(), 1));
  EXPECT_EQ(displayText(*conv(), 1, source, 100), "");
}

TEST_F(ExternalAnalyzerTest, AStuckOrFloodingConverterCostsOneFile) {
  index->ConverterTimeLimit = 1;
  index->ConverterOutputLimit = 100000;
  declare("conv\ntxt\nsleep 30; cp %i %o\nflood\ntxt\nhead -c 5000000 /dev/zero > %o; echo %i\n");
  const std::string source = dataFile("r.doc", "patient words\n");
  EXPECT_FALSE(conv()->indexFile(source.c_str(), 1));
  char path[1024];
  auto *flood = dynamic_cast<CExternalAnalyzer *>(index->analyzerNamed("flood"));
  ASSERT_NE(flood, nullptr);
  flood->makeTemporaryPath(source.c_str(), path, 2);
  flood->createTemporaryFile(source.c_str(), path);
  struct stat info {};
  ASSERT_EQ(stat(path, &info), 0);
  EXPECT_LE(info.st_size, 100000);
}
