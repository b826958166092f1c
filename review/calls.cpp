#include "review/calls.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <chrono>
#include <fstream>
#include <iostream>
#include <set>
#include <sstream>

#include "core/context.h"
#include "review/call_files.h"
#include "review/change_list.h"
#include "review/describe.h"
#include "review/formats/writers.h"

namespace delvane {
namespace {

constexpr std::size_t kLargestList = std::size_t{64} << 20;

struct CFormat {
    std::string_view m_word;
    std::string_view m_ending;
    void (*m_write)(const CReview& review, std::ostream& stream);  // null for the page, which has a limit
};

// A word may stand for more than one file.
constexpr std::array<CFormat, 7> kFormats = {{{"html", ".review.html", nullptr},
                                              {"jsonl", ".review.jsonl", WriteLines},
                                              {"sarif", ".sarif", WriteSarif},
                                              {"junit", ".junit.xml", WriteJUnit},
                                              {"markdown", ".review.md", WriteMarkdown},
                                              {"reg", ".undo.reg", WriteUndo},
                                              {"reg", ".redo.reg", WriteRedo}}};

// What was asked for, as it was typed.
struct CReviewOptions {
    CString m_strBaseline;
    CString m_strCurrent;
    CString m_strControl;
    CString m_strInstalled;
    CString m_strResults;
    CString m_strOutput;
    CString m_strDraft;
    CString m_strFormats = "html";
    CString m_strFailOn = "warning";
    std::vector<CString> m_accept;
    std::uint32_t m_nLimit = 2000;
    bool m_bQuiet = false;
};

std::uint64_t Now() {
    using CTicks = std::chrono::duration<std::uint64_t, std::ratio<1, kTicksPerSecond>>;
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<CTicks>(now).count() + kUnixEpochTicks;
}

// In the order of the table, each once.
std::vector<CFormat> FormatsOf(const CString& typed) {
    std::set<CString> words;
    std::istringstream stream(typed);
    for (CString word; std::getline(stream, word, ',');)
        words.insert(word);
    const bool isNone = words.erase("none") != 0;
    std::vector<CFormat> formats;
    std::ranges::copy_if(kFormats, std::back_inserter(formats),
                         [&](const CFormat& format) { return words.contains(CString(format.m_word)); });
    for (const CFormat& format : formats)
        words.erase(CString(format.m_word));
    if (!words.empty()) {
        throw CCallError(kReviewBadCall,
                         "--write: \"" + *words.begin() +
                             "\" is no format; there are html, jsonl, sarif, junit, markdown, reg and none");
    }
    if (isNone != formats.empty()) throw CCallError(kReviewBadCall, "--write: none goes alone");
    return formats;
}

void AddOptions(CLI::App& app, CReviewOptions& options) {
    app.add_option("BASELINE", options.m_strBaseline, "the snapshot before: a name, or a path that ends in .dvs")
        ->required();
    app.add_option("CURRENT", options.m_strCurrent, "the snapshot after it")->required();
    app.add_option(
        "--write", options.m_strFormats,
        "what is written, with commas between: html (the default), jsonl, sarif, junit, markdown, reg, or none");
    app.add_option("--output", options.m_strOutput,
                   "the folder for it; made when it is missing (default: the results folder)");
    app.add_option("--results", options.m_strResults, "the folder in which snapshots are looked for by name");
    app.add_option("--accept", options.m_accept, "a reviewed list of what is accepted; may be given several times")
        ->allow_extra_args(false);
    app.add_option("--draft", options.m_strDraft,
                   "writes a list that would accept all that is open, for reasons to be filled in");
    app.add_option("--control", options.m_strControl,
                   "a snapshot taken after BASELINE while nothing was installed: what differs there too is noise");
    app.add_option("--installed", options.m_strInstalled,
                   "a snapshot taken after the installation, where CURRENT was taken after the removal");
    app.add_option("--fail-on", options.m_strFailOn,
                   "what makes the exit code 1: error, warning (the default), info, change or none");
    app.add_option("--limit", options.m_nLimit, "how many changes the page shows of one group (default: 2000)");
    app.add_flag("--quiet", options.m_bQuiet, "nothing on standard output");
    app.footer(
        "Exit code: 0 nothing that is open reaches --fail-on, 1 something does, 2 the call or an accept list is\n"
        "wrong and nothing was written, 3 a snapshot could not be loaded or a file not written.");
}

EFailOn FailOnOf(const CString& typed) {
    const auto level = std::ranges::find(kWords<EFailOn>, typed);
    if (level == kWords<EFailOn>.end()) {
        throw CCallError(kReviewBadCall,
                         "--fail-on: \"" + typed + "\" is no level; there are error, warning, info, change and none");
    }
    return static_cast<EFailOn>(level - kWords<EFailOn>.begin());
}

CAcceptList ReadAcceptLists(const std::vector<CString>& files, std::uint64_t today) {
    CAcceptList list;
    for (const CString& name : files) {
        std::ifstream file(name, std::ios::binary);
        std::ostringstream text;
        if (file.peek() != std::ifstream::traits_type::eof()) text << file.rdbuf();
        if (!file.is_open() || file.bad() || text.view().size() > kLargestList) {
            throw CCallError(kReviewBadCall, name + ": the accept list cannot be read");
        }
        try {
            list.Read(name, text.view(), today);
        } catch (const CAcceptError& error) {
            throw CCallError(kReviewBadCall, error.what());
        }
    }
    return list;
}

void TellIdleEntries(const CAcceptList& list) {
    for (const CAcceptEntry& entry : list.GetEntries()) {
        if (entry.m_bExpired) {
            theContext.Say(entry.GetPlace() + ": accepts nothing any more, it ended with " + entry.m_strUntil);
        } else if (!entry.m_bFits) {
            theContext.Say(entry.GetPlace() + ": fits nothing");
        }
    }
}

void FlushOutput(const CString& problem = "it could not be written to its end") {
    std::cout << std::flush;
    if (!std::cout.good()) throw CCallError(kReviewNoFile, "standard output: write: " + problem);
}

int RunReview(const CReviewOptions& options) {
    // What can be wrong with a call is found before anything is opened or made.
    const std::vector<CFormat> formats = FormatsOf(options.m_strFormats);
    CReviewInput input;
    input.m_failOn = FailOnOf(options.m_strFailOn);
    input.m_nCreated = Now();
    input.m_accept = ReadAcceptLists(options.m_accept, input.m_nCreated);

    PrepareContext();
    UseResultsFolder(options.m_strResults,
                     {options.m_strBaseline, options.m_strCurrent, options.m_strControl, options.m_strInstalled},
                     options.m_strOutput.empty() && !formats.empty());
    std::vector<std::unique_ptr<CSnapshot>> snapshots;
    const auto load = [&](const CString& name, CReviewInput::CSide& side) {
        if (name.empty()) return;
        snapshots.push_back(LoadSnapshot(name, side.m_strFile));
        side.m_pSnapshot = snapshots.back().get();
        LoadGaps(name, side.m_gaps);
    };
    load(options.m_strBaseline, input.m_baseline);
    load(options.m_strCurrent, input.m_current);
    load(options.m_strControl, input.m_control);
    load(options.m_strInstalled, input.m_installed);

    const CReview review(std::move(input));
    std::vector<CString> written;
    const CString folder = formats.empty() ? CString() : MakeOutputFolder(options.m_strOutput);
    for (const CFormat& format : formats) {
        written.push_back(
            WriteWholeFile(folder + "\\" + review.GetFileName() + CString(format.m_ending), [&](std::ostream& stream) {
                format.m_write == nullptr ? WriteReviewPage(review, stream, options.m_nLimit)
                                          : format.m_write(review, stream);
            }));
    }
    if (!options.m_strDraft.empty()) {
        written.push_back(
            WriteWholeFile(MakeOwnPath(options.m_strDraft), [&](std::ostream& stream) { WriteDraft(review, stream); }));
    }
    TellIdleEntries(review.m_accept);
    if (!options.m_bQuiet) {
        WriteVerdict(review, std::cout);
        for (const CString& path : written)
            std::cout << "wrote " << VisibleText(path) << "\n";
        FlushOutput("the verdict could not be written");
    }
    return review.m_nExit;
}

int RunExport(const CString& name, const CString& results) {
    PrepareContext();
    UseResultsFolder(results, {name}, false);
    CString file;
    const std::unique_ptr<CSnapshot> snapshot = LoadSnapshot(name, file);
    ExportSnapshot(*snapshot, file, std::cout);
    FlushOutput();
    return 0;
}

int RunWord(const CString& word, std::vector<CString> arguments) {
    CLI::App app;
    app.name("delvane " + word);
    app.allow_windows_style_options(false);  // a path may begin with a slash
    CReviewOptions options;
    if (word == "review") {
        app.description("Compares two snapshots and writes what differs in forms for people and scripts.");
        AddOptions(app, options);
    } else {
        if (word == "export") {
            app.description("Writes every node of a snapshot as JSON Lines to standard output.");
            app.add_option("SNAPSHOT", options.m_strCurrent, "a name, or a path that ends in .dvs")->required();
        } else {
            app.description("Lists the snapshots of the results folder: name, time, machine, user, system, size.");
        }
        app.add_option("--results", options.m_strResults, "the folder in which snapshots are looked for by name");
    }
    // A gate whose control comes from a variable that nobody has set must not run without one.
    const auto isEmpty = [](const CString& text) {
        return text.empty() || (text.starts_with("--") && text.ends_with('='));
    };
    if (std::any_of(arguments.begin(), arguments.end(), isEmpty)) {
        throw CCallError(kReviewBadCall, "an argument is an empty text; a variable may not be set");
    }
    try {
        std::reverse(arguments.begin(), arguments.end());  // as the parser takes them
        app.parse(arguments);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() != 0) {
            throw CCallError(kReviewBadCall, CString(error.what()) + "; delvane " + word + " --help lists the options");
        }
        std::cout << app.help();
        FlushOutput();
        return 0;
    }
    if (word == "review") return RunReview(options);
    if (word == "export") return RunExport(options.m_strCurrent, options.m_strResults);
    PrepareContext();
    ListSnapshots(options.m_strResults, std::cout);
    FlushOutput();
    return 0;
}

}  // namespace

std::optional<int> RunCall(int argumentCount, const char* const* arguments) {
    const CString word = argumentCount < 1 ? "" : arguments[0];
    if (word != "review" && word != "export" && word != "list") return std::nullopt;
    try {
        return RunWord(word, {arguments + 1, arguments + argumentCount});
    } catch (const CCallError& error) {
        // The faults of an accept list are a line each; any other text is one sentence, whatever a name in it holds.
        std::istringstream lines(error.what());
        const char end = error.GetExitCode() == kReviewBadCall ? '\n' : '\0';
        for (CString line; std::getline(lines, line, end);)
            theContext.Say(line);
        return error.GetExitCode();
    } catch (...) {
        theContext.Say(DescribeCurrentException());
        return kReviewNoFile;
    }
}

}  // namespace delvane
