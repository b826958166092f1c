// The host: the program's own files, and the text of its command line.
#include "platform/host.h"

#include <algorithm>
#include <csignal>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/file_stream.h"
#include "platform/hosted/hosted_machine.h"
#include "tests/support/prefix.h"
#include "tests/support/search.h"

namespace delvane {
namespace {

namespace fs = std::filesystem;

class OwnFiles : public testing::Test {
protected:
    std::string Host(std::string_view name) const {
        std::string path = m_home / name;
        std::replace(path.begin(), path.end(), '/', '\\');
        return path;
    }
    CTemporaryFolder m_home;
    CPrefix m_prefix;
    std::unique_ptr<CHostedMachine> m_pMachine = MakePrefix(m_prefix.GetPath());
    std::unique_ptr<CHost> m_pHost = MakeHostedHost(m_pMachine->GetPaths(), m_home.GetPath());
};

TEST_F(OwnFiles, TakeTheirPlaceWhenTheyAreComplete) {
    m_home.Write("a.dvs", "earlier");
    {
        const auto file = m_pHost->CreateFile(Host("a.dvs"));
        file->Write("half");
        EXPECT_EQ(m_home.Read("a.dvs"), "earlier");
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(m_home.GetPath()), {}), 1) << "nothing is left behind";
    const auto file = m_pHost->CreateFile(Host("a.dvs"));
    file->Write("new");
    file->Commit();
    EXPECT_EQ(m_home.Read("a.dvs"), "new");
}

TEST_F(OwnFiles, AStreamLosesNothingWhereItsBufferEnds) {
    constexpr std::size_t kMany = 600'000;
    CFileStream stream(m_pHost->CreateFile(Host("long")), CFileStream::EForm::kText);
    std::string text;
    for (std::size_t i = 0; text.size() < kMany; ++i) {
        text += std::to_string(i) + '\xFF';
        stream << i;
        stream.put('\xFF');
    }
    stream.Commit();
    EXPECT_TRUE(m_home.Read("long") == text);
}

TEST_F(OwnFiles, OnlyRegularFilesAreEverOpened) {
    ASSERT_EQ(mkfifo((m_home / "pipe").c_str(), 0600), 0);
    m_home.MakeFolder("folder");
    fs::create_symlink("/dev/full", m_home / "device");
    for (const char* name : {"pipe", "folder", "device"}) {
        EXPECT_THROW(m_pHost->CreateFile(Host(name)), CFileOpenError) << name;
        EXPECT_EQ(m_pHost->CreateTextFile(Host(name)), nullptr) << name;
        EXPECT_THROW(m_pHost->ReadFile(Host(name), 100), CFileOpenError) << name;
        CLoadedImage image;
        EXPECT_FALSE(m_pMachine->MapAndLoad(Host(name), image)) << name;
    }
    EXPECT_THROW(m_pHost->CreateFile(Host("missing/x")), CFileOpenError);
}

TEST_F(OwnFiles, ALinkIsWrittenThroughAndALargeFileRefused) {
    m_home.Write("real", "old");
    fs::create_symlink("real", m_home / "link");
    const auto file = m_pHost->CreateFile(Host("link"));
    file->Write("new");
    file->Commit();
    EXPECT_TRUE(fs::is_symlink(m_home / "link"));
    EXPECT_EQ(m_home.Read("real"), "new");
    EXPECT_THROW(m_pHost->ReadFile(Host("real"), 2), CFileError);
}

TEST_F(OwnFiles, AreFoundWithoutRegardToCaseAnExactNameFirst) {
    m_home.Write("Sub/BEFORE.DVS", "upper");
    EXPECT_EQ(m_pHost->ReadFile(Host("sub/Before.dvs"), 10).GetBytes(), "upper");
    m_home.Write("Sub/before.dvs", "lower");
    EXPECT_EQ(m_pHost->ReadFile(Host("SUB/before.dvs"), 10).GetBytes(), "lower");
    EXPECT_EQ(m_pHost->GetDisplayPath(Host("Sub/") + "\\x"), m_home / "Sub/x");
}

TEST_F(OwnFiles, ASignalEndsSearchesAndWritesWhileAGuardLives) {
    const auto search = SearchOf(*m_pMachine, "C:");
    CFindData data;
    {
        const CInterruptGuard guard(CInterruptGuard::EOwner::kAnswers);
        const auto file = m_pHost->CreateFile(Host("x"));
        std::raise(SIGTERM);
        EXPECT_THROW(search->Next(data), CInterrupted);
        EXPECT_THROW(file->Write("x"), CInterrupted);
        EXPECT_THROW(file->Commit(), CInterrupted);
    }
    EXPECT_NO_THROW(search->Next(data));
    // Where nobody answers, the process ends as it was asked to, but not before the temporary file is gone.
    const auto writeAlone = [this] {
        const auto file = m_pHost->CreateFile(Host("x"));
        std::raise(SIGTERM);
        EXPECT_THROW(file->Write("x"), CInterrupted);
    };
    EXPECT_EXIT(writeAlone(), testing::KilledBySignal(SIGTERM), "");
    EXPECT_TRUE(fs::is_empty(m_home.GetPath()));
}

TEST(CommandText, ArgumentsBecomeOneTextThatKeepsThemApart) {
    const char* const arguments[] = {"/s", "/bc:My Snap", "", "/res:/tmp/x/", "a\tb"};
    EXPECT_EQ(MakeCommandLine(5, arguments),
              "/s /bc:My\x1FSnap  /res:/tmp/x/ a\x1E"
              "b");
}

TEST(CommandText, AnOrdinaryPathTakesTheHostForm) {
    EXPECT_EQ(MakeResultsPath("/tmp/my results/"), "\\tmp\\my results\\");
    EXPECT_EQ(MakeResultsPath("C:/out/"), "C:\\out\\");
    EXPECT_EQ(MakeResultsPath("plain"), "plain");
    EXPECT_EQ(MakeResultsPath("\\tmp\\a/b\\"), "\\tmp\\a/b\\");
    EXPECT_TRUE(MakeResultsPath("out/").starts_with("\\"));
    EXPECT_TRUE(MakeResultsPath("out/").ends_with("\\out\\"));
}

}  // namespace
}  // namespace delvane
