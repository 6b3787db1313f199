#include "frame/exports/trace.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <thread>

#include "frame/exports/load.h"
#include "tests/support/test.h"
#include "vxicore26.h"

namespace {

namespace fs = std::filesystem;

std::string earlyFolder() {
  return (fs::temp_directory_path() / ("vxearly" + std::to_string(getpid()))).string();
}
[[gnu::constructor(101)]] void setEarly() { vx::setTrace(0, earlyFolder().c_str()); }

// A host may set the trace before constructors of the library could run.
TEST(EarlyTrace, keepsTheFolderSetBeforeConstructorsRun) {
  fs::create_directory(earlyFolder());
  EXPECT_EQ(vxSetupLib(1, nullptr), 1);
  EXPECT_EQ(vxSetupLib(0, nullptr), 0);
  EXPECT_EQ(fs::remove_all(earlyFolder()), 2u) << "the folder and its file";
}

class Trace : public testing::Test {
 protected:
  Trace() {
    std::string pattern = (fs::temp_directory_path() / "vxtraceXXXXXX").string();
    folder = mkdtemp(pattern.data());
  }
  ~Trace() override {
    setDebugTrace(0, folder.c_str());
    fs::remove_all(folder);
  }
  std::string file() const { return folder + "/vxtrace_log.txt"; }
  std::string written() const {
    std::ifstream in(file());
    return {std::istreambuf_iterator<char>(in), {}};
  }
  static std::string record(int n, const std::string& text) {
    return "<<<<" + std::to_string(n) + ": " + text + " \n>>>>\n";
  }
  // The records of a set-up call, the first of which has number n.
  std::string setUpRecords(int n, int mask) const {
    return record(n, "setTrace - traceFile: \n -- " + file()) +
           record(n + 1, "setTrace - traceMask:  " + std::to_string(mask));
  }
  int firstNumber() const { return std::stoi(written().substr(4)); }

  std::string folder;
};

TEST_F(Trace, recordsHaveTheirExactForm) {
  EXPECT_EQ(vxSetupLib(1, folder.c_str()), 1);
  const int n = firstNumber();
  std::string wanted = setUpRecords(n, 1);
  EXPECT_EQ(written(), wanted);
  EXPECT_EQ(vx::traceLine("Title", "the body"), 1);
  wanted += record(n + 2, "Title\n -- the body");
  setDebugTrace(-1, nullptr);  // bit 0 of -1 is set
  wanted += setUpRecords(n + 3, -1);
  EXPECT_EQ(written(), wanted);
}

TEST_F(Trace, callsWriteTheirArguments) {
  setDebugTrace(1, folder.c_str());
  const std::size_t start = written().size();
  auto* pixels = reinterpret_cast<void*>(std::uintptr_t{0xABCDEF01234});
  vxUnblock(0, pixels, 3, -4, 0, 6, 263, 17, 9, -10);
  vxUnblock(1, nullptr, 3, 30, 10, 10, 80, 1, 0, 0);
  vxYUVEdgeRGB(1, nullptr, 2, 0, 4, 1.5, 0.01, 2, -3, 1e3, 0, 0.125, 7, -7, 1, 2, 3, 42);
  const std::string bodies[] = {
      "F: vxUnblock\n -- 0 abcdef01234 3 -4 0 6  263 17 9 -10  rc=1",
      "F: vxUnblock\n -- 1 0 3 30 10 10  80 1 0 0  rc=64",
      "F: vxYUVEdgeRGB\n -- 1 0 2 0 4  1.500000 0.010000 2.000000 -3.000000 1000.000000 0.000000 "
      "0.125000  7 -7  1.000000 2.000000 3.000000 42  rc=1"};
  std::string wanted;
  int number = firstNumber() + 2;
  for (const std::string& body : bodies) wanted += record(number++, body);
  EXPECT_EQ(written().substr(start), wanted);
}

TEST_F(Trace, longTextIsCutAtTheRecordsBuffer) {
  setDebugTrace(1, folder.c_str());
  const std::size_t start = written().size();
  constexpr double kLong = 1e308;
  vxYUVEdgeRGB(0, nullptr, 0, 0, 0, kLong, kLong, kLong, kLong, kLong, kLong, kLong, 0, 0, kLong,
               kLong, kLong, 0);
  const std::string text = written().substr(start);
  const std::size_t body = text.find("\n -- ") + 5;
  EXPECT_EQ(text.substr(body + 511), " \n>>>>\n");
}

TEST_F(Trace, maskDecides) {
  EXPECT_EQ(vxSetupLib(0, folder.c_str()), 0);
  EXPECT_EQ(vx::getTraceMask(), 0);
  EXPECT_EQ(vxSetupLib(2, nullptr), 0);
  EXPECT_EQ(vx::getTraceMask(), 2);
  EXPECT_EQ(vx::traceLine("a", "b"), 0);
  EXPECT_EQ(vxSetupLib(-1, "/nowhere"), 0);
  EXPECT_EQ(vx::getTraceMask(), 2) << "a negative mask changes nothing";
  EXPECT_FALSE(fs::exists(file()));
  EXPECT_EQ(vxSetupLib(3, nullptr), 1) << "the folder given with mask 0 holds";
  EXPECT_EQ(vx::traceLine("a", "b"), 1);
  EXPECT_TRUE(written().ends_with(": a\n -- b \n>>>>\n")) << written();
}

TEST_F(Trace, foldersMayHaveAnyLength) {
  std::string longName = folder;
  for (int i = 0; i < 700; ++i) longName += "/.";
  EXPECT_EQ(vxSetupLib(1, longName.c_str()), 1);
  EXPECT_NE(written().find(longName), std::string::npos);
  const int n = firstNumber();
  const std::string beyond = folder + std::string(100000, 'x');
  EXPECT_EQ(vxSetupLib(1, beyond.c_str()), 0) << "a file that cannot be opened is passed over";
  EXPECT_EQ(vx::traceLine("a", "b"), 0);
  setDebugTrace(1, folder.c_str());
  EXPECT_TRUE(written().ends_with(setUpRecords(n + 2, 1))) << "what was not written has no number";
}

TEST_F(Trace, recordsOfManyThreadsStayWhole) {
  setDebugTrace(1, folder.c_str());
  const int first = firstNumber();
  constexpr int kThreads = 4, kRecords = 100;
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t)
    threads.emplace_back([&, t] {
      for (int i = 0; i < kRecords; ++i) {
        vx::traceLine("thread", std::string(200, static_cast<char>('a' + t)).c_str());
        if (i % 25 == 24) setDebugTrace(1, folder.c_str());
      }
    });
  for (auto& thread : threads) thread.join();

  const std::string text = written(), path = "setTrace - traceFile: \n -- " + file();
  int number = first;
  for (std::size_t at = 0, end; at < text.size(); at = end + 7, ++number) {
    end = text.find(" \n>>>>\n", at);
    ASSERT_NE(end, std::string::npos);
    const std::string head = "<<<<" + std::to_string(number) + ": ";
    ASSERT_EQ(text.substr(at, head.size()), head) << "numbers follow each other";
    const std::string body = text.substr(at + head.size(), end - at - head.size());
    ASSERT_TRUE(body == path || body == "setTrace - traceMask:  1" ||
                body == "thread\n -- " + std::string(200, body.back()))
        << body;
  }
  EXPECT_EQ(number - first, 2 + kThreads * (kRecords + 2 * kRecords / 25));
}

TEST_F(Trace, attachingResetsTheMaskAndKeepsTheFolder) {
  setDebugTrace(1, folder.c_str());
  vx::attachProcess();
  EXPECT_EQ(vx::getTraceMask(), 0);
  EXPECT_EQ(vxSetupLib(2, nullptr), 0);
  EXPECT_EQ(vxSetupLib(3, nullptr), 1);
  EXPECT_TRUE(written().ends_with("traceMask:  3 \n>>>>\n"));
}

}  // namespace
