// The snapshot file: its bytes, its versions, and what is refused.
#include "capture/drives.h"
#include "capture/extensions.h"
#include "capture/registry.h"
#include "platform/little_endian.h"
#include "tests/support/machine_test.h"
#include "tree/archive.h"

namespace delvane {
namespace {

CString U32(std::uint32_t value) { return BytesOf(value, 4); }

CString Bytes(std::initializer_list<CString> parts) {
    CString all;
    for (const CString& part : parts)
        all += part;
    return all;
}

class SnapshotFile : public CMachineTest {
protected:
    // The head and the registry of a snapshot of version `word`, up to the drives.
    static CString Head(std::uint32_t word = 0x00020001) {
        return Bytes({"VLED", U32(word), EncodeText("n"), EncodeText("d"), EncodeText("u"), EncodeText("c"),
                      EncodeText("o"), U32(0x01C07322), U32(0x4E9F8000), EncodeText("My Computer"), EncodeText(""),
                      U32(0)});
    }
    static CString File(const CString& name, const CString& path) {
        return Bytes({EncodeText(name), EncodeText(path), CString(36, '\0')});
    }
    static CString NoExtensions() {
        return Bytes({EncodeText("My Computer (Extensions)"), EncodeText("My Computer (Extensions)"), U32(0)});
    }
    // The drive set with one drive C: that begins a chain of `depth` directories.
    static CString Nested(std::uint32_t depth) {
        CString bytes = Bytes({U32(4), File("My Computer", "My Computer"), U32(0), U32(1), U32(3), EncodeText("")});
        CString path = "C:";
        bytes += File(path, path) + U32(0);
        for (std::uint32_t i = 0; i < depth; ++i)
            bytes += U32(1) + File("d", "") + U32(0);
        return bytes + U32(0);
    }
};

TEST_F(SnapshotFile, HoldsExactlyTheseBytes) {
    SetRegistry(R"(
        HKCR
          .txt\
            @ = sz "t"
        HKLM
          K\
            v = dword 7
    )");
    const CString noText = EncodeText("");
    Start(R"(
        C: fixed [System]
          a.txt  size=4294967297 written=2001-02-03T04:05:06
          Sub\
    )");
    const auto snapshot = TakeSnapshot("n");
    // 2001-02-03 04:05:06 UTC is 01C08D96 90D5D100 in ticks.
    const CString written = Bytes({U32(0), U32(0), U32(0), U32(0)});
    const std::uint64_t ticks =
        snapshot->FindObject("C:\\a.txt") != nullptr
            ? static_cast<CDelvFileObj*>(snapshot->FindObject("C:\\a.txt"))->m_ftLastWrite.GetTicks()
            : 0;
    EXPECT_EQ(ticks, 126'256'467'060'000'000U);
    EXPECT_EQ(Store(*snapshot), Bytes({"VLED",
                                       U32(0x00020001),
                                       EncodeText("n"),
                                       EncodeText("C:\\Delvane\\Results"),
                                       EncodeText("tester"),
                                       EncodeText("BENCH"),
                                       EncodeText("Windows 2000 - Service Pack 4 (Build 2195)"),
                                       U32(126'227'808'000'000'000 >> 32),
                                       U32(static_cast<std::uint32_t>(126'227'808'000'000'000)),
                                       EncodeText("My Computer"),
                                       noText,
                                       U32(3),  // the hives: root key, names, values, keys
                                       U32(HKEY_CLASSES_ROOT) + EncodeText("HKCR") + noText + U32(0) + U32(1),
                                       EncodeText(".txt") + noText + U32(1),
                                       EncodeText("(default)") + noText + U32(REG_SZ) + U32(2) + CString("t", 2),
                                       U32(0),
                                       U32(HKEY_CURRENT_USER) + EncodeText("HKCU") + noText + U32(0) + U32(0),
                                       U32(HKEY_LOCAL_MACHINE) + EncodeText("HKLM") + noText + U32(0) + U32(1),
                                       EncodeText("K") + noText + U32(1),
                                       EncodeText("v") + noText + U32(REG_DWORD) + U32(4) + U32(7),
                                       U32(0),
                                       U32(4),
                                       File("My Computer", "My Computer"),
                                       U32(0),
                                       U32(1),  // the drive set
                                       U32(3),
                                       EncodeText("System"),
                                       File("C:", "C:"),
                                       U32(1),  // the drive
                                       EncodeText("a.txt"),
                                       EncodeText("C:\\a.txt"),
                                       U32(0x20),
                                       written,  // creation, access
                                       U32(static_cast<std::uint32_t>(ticks >> 32)),
                                       U32(static_cast<std::uint32_t>(ticks)),
                                       U32(1),
                                       U32(1),
                                       U32(1),
                                       EncodeText("Sub"),
                                       EncodeText("C:\\Sub"),
                                       U32(0x10),
                                       CString(32, '\0'),
                                       U32(0),
                                       U32(0),
                                       EncodeText("My Computer (Extensions)") + EncodeText("My Computer (Extensions)"),
                                       U32(1) + EncodeText(".txt") + EncodeText(".txt") + EncodeText("t"),
                                       noText + noText + U32(0)}));
}

// No helper of the program's own writes these.
TEST_F(SnapshotFile, TimesAndLongTextsHaveTheseBytes) {
    Start("C: fixed\n  f");
    const auto snapshot = TakeSnapshot("n");
    auto* const file = static_cast<CDelvFileObj*>(snapshot->FindObject("C:\\f"));
    file->m_dwAttributes = 0x21;
    file->m_ftCreation = {0x11121314, 0x01020304};
    file->m_ftLastAccess = {0x31323334, 0x21222324};
    file->m_ftLastWrite = {0x51525354, 0x41424344};
    file->SetSize(0x6162636471727374);
    snapshot->m_strUserName = CString(300, 'u');
    snapshot->m_strComputerName = CString(70'000, 'c');
    const CString bytes = Store(*snapshot);
    EXPECT_NE(bytes.find(CString("\x01"
                                 "f\x04"
                                 "C:\\f"
                                 "\x21\0\0\0"
                                 "\4\3\2\1\x14\x13\x12\x11"
                                 "$#\"!4321"
                                 "DCBATSRQ"
                                 "dcbatsrq",
                                 43)),
              CString::npos);
    EXPECT_NE(bytes.find("\xFF\x2C\x01uuu"), CString::npos) << "300 in two bytes";
    EXPECT_NE(bytes.find(CString("\xFF\xFF\xFF\x70\x11\x01\x00"
                                 "ccc",
                                 10)),
              CString::npos)
        << "70,000 in four";
    EXPECT_EQ(LoadFrom(bytes)->m_strComputerName.size(), 70'000U);
}

TEST_F(SnapshotFile, ComesBackAsItWasStored) {
    Start(R"(
        C: fixed [Sys]
          Éa
          Deep\
            Deeper\
              x.dll  size=12 attributes=0x27
        D: fixed
    )");
    m_pMachine->m_strUser = CString(300, 'u');
    theContext.m_strUserName = m_pMachine->m_strUser;
    const auto snapshot = TakeSnapshot();
    const CString bytes = Store(*snapshot);
    const auto loaded = LoadFrom(bytes);
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(loaded->m_name, "Snap") << "the stored name, not the one it was asked by";
    EXPECT_EQ(loaded->m_strUserName, m_pMachine->m_strUser);
    EXPECT_EQ(ListTree(*loaded->m_pDrives), ListTree(*snapshot->m_pDrives));
    EXPECT_EQ(Store(*loaded), bytes);
}

// Whatever a file holds is kept and stored again: one hive of three, a type beyond the known ones.
TEST_F(SnapshotFile, KeepsWhatThisMachineDoesNotHave) {
    Start("");
    const CString value = Bytes({EncodeText("v"), EncodeText(""), U32(0xFFFF0012), U32(3), "abc"});
    const CString key = Bytes({EncodeText("k"), EncodeText(""), U32(1), value, U32(0)});
    CString bytes = Head();
    bytes.resize(bytes.size() - 4);
    bytes += Bytes({U32(1), U32(0x80000002), EncodeText("HKLM"), EncodeText(""), U32(0), U32(1), key});
    bytes += Bytes({U32(0), File("My Computer", "My Computer"), U32(0), U32(0)});
    bytes +=
        Bytes({EncodeText("My Computer (Extensions)"), EncodeText("My Computer (Extensions)"), U32(1), EncodeText(".x"),
               EncodeText(".x"), EncodeText("X file"), EncodeText("icon"), EncodeText("run"), U32(1)});
    const auto loaded = LoadFrom(bytes);
    ASSERT_NE(loaded, nullptr);
    const auto& extension = static_cast<const CDelvExtObj&>(*loaded->FindObject(".x"));
    EXPECT_EQ(CString(extension.m_strIcon) + CString(extension.m_strOpenCommand), "iconrun");
    loaded->m_fullName = loaded->GetArena().Copy("C:\\Delvane\\Results");
    bytes.replace(bytes.find("\1d"), 2, EncodeText("C:\\Delvane\\Results"));
    EXPECT_EQ(Store(*loaded), bytes);
}

// A copy that stopped half way must be refused, never loaded as a smaller machine.
TEST_F(SnapshotFile, EveryTruncationIsRefused) {
    Start(R"(
        C: fixed [System]
          Tools\
            edit.exe  size=1200 written=2001-02-03T04:05:06
    )");
    const CString whole = Store(*TakeSnapshot());
    for (std::size_t size = 0; size < whole.size(); ++size) {
        SCOPED_TRACE("cut to " + std::to_string(size) + " bytes");
        EXPECT_THROW(LoadFrom(whole.substr(0, size)), CArchiveError);
    }
}

TEST_F(SnapshotFile, ClaimsThatTheFileCannotHoldAreRefused) {
    Start("");
    const CString set = Bytes({U32(4), File("My Computer", "My Computer")});
    const CString kCases[] = {
        Bytes({Head(), set, U32(0x7FFFFFFF)}),                              // files
        Bytes({Head(), set, U32(0), U32(0x7FFFFFFF)}),                      // drives
        Bytes({"VLED", U32(0x00020001), "\xFF\xFF\xFF", U32(0xFFFFFFFF)}),  // a string of 4 GB
        Bytes({Head(), Nested(200'000)}),
    };
    for (const CString& bytes : kCases)
        EXPECT_THROW(LoadFrom(bytes), CArchiveError);
}

TEST_F(SnapshotFile, ACountBelowZeroMeansNoRecord) {
    Start("");
    EXPECT_NE(LoadFrom(Bytes({Head(), U32(4), File("My Computer", "My Computer"), U32(0x80000000), U32(0xFFFFFFFF),
                              NoExtensions()})),
              nullptr);
}

TEST_F(SnapshotFile, DeepTreesLoadUpToTheLimit) {
    Start("");
    EXPECT_NE(LoadFrom(Bytes({Head(), Nested(500), NoExtensions()})), nullptr);
    EXPECT_THROW(LoadFrom(Bytes({Head(), Nested(kMaxTreeDepth + 1), NoExtensions()})), CArchiveError);
}

TEST_F(SnapshotFile, TheVersionDecidesWhatIsRead) {
    Start("");
    const CString set = Bytes({U32(4), File("My Computer", "My Computer"), U32(0), U32(1), U32(3)});
    const CString rest = Bytes({File("C:", "C:"), U32(0), U32(0), NoExtensions()});
    const struct {
        std::uint32_t m_word;
        const char* m_text;
        bool m_bVolume;
    } kCases[] = {{0x00010001, "v1.3", false}, {0x00010003, "v1.3", false}, {0x00010002, "v1.2", true},
                  {0x00000007, "v0.7", true},  {0x00020000, "v2.0", true},  {0x00020001, "v2.1", true}};
    for (const auto& version : kCases) {
        const auto loaded =
            LoadFrom(Bytes({Head(version.m_word), set, version.m_bVolume ? EncodeText("Vol") : CString(), rest}));
        ASSERT_NE(loaded, nullptr) << version.m_text;
        EXPECT_EQ(loaded->m_strVersion, version.m_text);
        auto* const drive = static_cast<CDelvDriveObj*>(loaded->m_pDrives->m_subdirs.front());
        EXPECT_EQ(drive->GetVolume(), version.m_bVolume ? "Vol" : "") << version.m_text;
    }
}

TEST_F(SnapshotFile, ForeignAndLaterFilesAreToldInTheLog) {
    Start("");
    EXPECT_EQ(LoadFrom("GIF89a..."), nullptr);
    EXPECT_EQ(ErrorLog(), "File Signatures do not match.\nThis file was not generated by the Logo Delvane.\n");
    for (const std::uint32_t word : {0x00020002U, 0x00030000U})
        EXPECT_EQ(LoadFrom(Head(word)), nullptr);
    EXPECT_EQ(CountOf(ErrorLog(), "This file must have been generated by a later version of the Logo Delvane.\n"), 2);
}

TEST_F(SnapshotFile, ItsTimeIsToldInLocalWordsOnce) {
    Start("");
    CSnapshot snapshot;
    snapshot.m_ftCreated = FILETIME::FromTicks(126'227'808'000'000'000);
    EXPECT_EQ(snapshot.GetTimeString(), "Mon Jan 01 00:00:00 2001");
    snapshot.m_ftCreated = {};
    EXPECT_EQ(snapshot.GetTimeString(), "Mon Jan 01 00:00:00 2001");
}

TEST_F(SnapshotFile, NamesAndPathsOfFilesFollowTheirQuirks) {
    Start("");
    CSnapshot snapshot;
    snapshot.SetName("a.DVS");
    EXPECT_EQ(snapshot.GetSavePath(), "C:\\Delvane\\Results\\a.DVS");
    EXPECT_EQ(snapshot.GetLoadPath(), "C:\\Delvane\\Results\\a.DVS.dvs");
    snapshot.m_fullName = snapshot.GetArena().Copy("C:\\Out\\");
    EXPECT_EQ(snapshot.GetSavePath(), "C:\\Out\\a.DVS");
    EXPECT_EQ(snapshot.GetLoadPath(), "C:\\Out\\\\a.DVS.dvs");
    EXPECT_FALSE(snapshot.Load());
    EXPECT_EQ(ErrorLog(), "") << "a file that is not there is no entry";
}

TEST_F(SnapshotFile, AFullDiskLeavesTheEarlierFileWhole) {
    Start("C: fixed");
    const auto snapshot = TakeSnapshot();
    m_pHost->m_files[snapshot->GetSavePath()] = "earlier";
    m_pHost->m_nFreeBytes = 50;
    EXPECT_THROW(snapshot->Save(), CFileError);
    EXPECT_EQ(m_pHost->m_files[snapshot->GetSavePath()], "earlier");
    m_pHost->m_bReadOnly = true;
    EXPECT_FALSE(snapshot->Save());
}

}  // namespace
}  // namespace delvane
