// Lists of nodes, their order and their merge.
#include "tree/node.h"

#include "report/base.h"
#include "tests/support/machine_test.h"

namespace delvane {
namespace {

// Writes the calls of a comparison down.
class CRecorder : public CReportObj {
public:
    void AddAdded(CDelvObj& object) override { m_strCalls += "+" + CString(object.m_name) + " "; }
    void AddDeleted(CDelvObj& object) override { m_strCalls += "-" + CString(object.m_name) + " "; }
    void AddChanged(CDelvObj& object, CDelvObj&) override { m_strCalls += "~" + CString(object.m_name) + " "; }
    CString m_strCalls;
};

// Tells the report of each pair that it is compared.
class CPairNode : public CDelvObj {
public:
    using CDelvObj::CDelvObj;
    bool Compare(CDelvObj& baseline, CReportObj& report) override {
        report.AddChanged(*this, baseline);
        return false;
    }
};

class Nodes : public testing::Test {
protected:
    CDelvObj* New(std::string_view name) { return m_arena.New<CPairNode>(nullptr, m_arena.Copy(name), CTextRef()); }
    CNodeList List(std::initializer_list<const char*> names) {
        CNodeList list(m_arena);
        for (const char* name : names)
            New(name)->InsertSorted(list);
        return list;
    }
    static CString NamesOf(const CNodeList& list) {
        CString names;
        for (const CDelvObj* node : list)
            names += CString(node->m_name) + " ";
        return names;
    }
    CString Merge(std::initializer_list<const char*> current, std::initializer_list<const char*> baseline) {
        CRecorder recorder;
        EXPECT_TRUE(CompareLists(List(current), List(baseline), recorder));
        return recorder.m_strCalls;
    }
    CArena m_arena;
};

TEST_F(Nodes, AreKeptInByteOrderAndEqualsInOrderOfArrival) {
    EXPECT_EQ(NamesOf(List({"b", "Z", "a", "\xC3\xA9", "_", "A"})), "A Z _ a b \xC3\xA9 ");
    CNodeList list = List({"x", "y"});
    CDelvObj* const second = New("x");
    second->InsertSorted(list);
    EXPECT_EQ(list[1], second);
}

TEST_F(Nodes, ThousandsInAnyOrderStaySorted) {
    CNodeList list(m_arena);
    for (unsigned i = 0; i < 5000; ++i)
        New(std::to_string(i * 7919 % 5000))->InsertSorted(list);
    EXPECT_EQ(list.size(), 5000U);
    EXPECT_TRUE(std::is_sorted(list.begin(), list.end(),
                               [](const CDelvObj* a, const CDelvObj* b) { return mbscmp(a->m_name, b->m_name) < 0; }));
}

TEST_F(Nodes, MergePairsEqualNamesAndReportsTheRestInOrder) {
    EXPECT_EQ(Merge({}, {}), "");
    EXPECT_EQ(Merge({"a", "b"}, {}), "+a +b ");
    EXPECT_EQ(Merge({}, {"a", "b"}), "-a -b ");
    EXPECT_EQ(Merge({"a", "c", "d"}, {"b", "c", "e"}), "+a -b ~c +d -e ");
    EXPECT_EQ(Merge({"README.TXT"}, {"Readme.txt"}), "+README.TXT -Readme.txt ") << "case alone parts two names";
    EXPECT_EQ(Merge({"Readme.txt"}, {"README.TXT"}), "-README.TXT +Readme.txt ") << "upper case sorts first";
}

TEST_F(Nodes, PathsAreTakenApartAtTheirSeparators) {
    const struct {
        std::string_view m_path, m_first, m_rest;
    } kCases[] = {{"", "", ""}, {"a", "a", ""}, {"a\\", "a", ""}, {"a\\b\\c", "a", "b\\c"}, {"\\a", "", "a"}};
    for (const auto& test : kCases) {
        std::string_view rest = test.m_path;
        EXPECT_EQ(SplitPath(rest, '\\'), test.m_first) << test.m_path;
        EXPECT_EQ(rest, test.m_rest) << test.m_path;
    }
}

TEST_F(Nodes, TextsOfEveryLengthFormComeBack) {
    for (const std::size_t length : {0, 1, 254, 255, 256, 65533, 65534, 65535, 65536, 70000}) {
        const CString text(length, 'x');
        EXPECT_EQ(m_arena.Copy(text), text) << length;
        EXPECT_EQ(EncodeText(text).size(), length + (length < 255 ? 1 : length < 65534 ? 3 : 7)) << length;
    }
}

using NodesOfAMachine = CMachineTest;

TEST_F(NodesOfAMachine, ASnapshotIsFoundFromBelowAndNotFromElsewhere) {
    Start(R"(
        C: fixed
          Tools\
            edit.exe
    )");
    const auto snapshot = TakeSnapshot();
    CDelvObj* const file = snapshot->FindObject("C:\\tools\\EDIT.EXE");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(FindSnapshot(file), snapshot.get());
    CDelvDiffObj change(*file, *file);
    EXPECT_EQ(change.GetFullName(), "C:\\Tools\\edit.exe");
    EXPECT_EQ(FindSnapshot(&change), nullptr);
    EXPECT_EQ(FindSnapshot(nullptr), nullptr);
}

}  // namespace
}  // namespace delvane
