// The command line: its tokens and its switches.
#include "core/app.h"
#include "core/context.h"
#include "core/drive_names.h"

namespace delvane {

CInstallApp theApp;

namespace {

// The longest token there is; a longer one is refused whole.
constexpr std::size_t kLongestToken = 259;

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool IsLetter(char c) { return Lower(c) >= 'a' && Lower(c) <= 'z'; }

// Whether the token has the word (in lower case) at that place, in either case.
bool HasWord(std::string_view token, std::size_t offset, std::string_view word) {
    if (token.size() < offset + word.size()) return false;
    for (std::size_t i = 0; i < word.size(); ++i) {
        if (Lower(token[offset + i]) != word[i]) return false;
    }
    return true;
}

struct COptionWord {
    std::string_view m_word;
    bool CRunContext::*m_option;
};

constexpr COptionWord kOptions[] = {
    {"ext", &CRunContext::m_bExtensions},        {"r:hklm", &CRunContext::m_bHklm},
    {"r:hkcu", &CRunContext::m_bHkcu},           {"r:hkcr", &CRunContext::m_bHkcr},
    {"dg:hd", &CRunContext::m_bHardDrives},      {"dg:nd", &CRunContext::m_bNetworkDrives},
    {"dg:rd", &CRunContext::m_bRemovableDrives}, {"dg:cd", &CRunContext::m_bCompactDiscs},
};

}  // namespace

// Blanks and tabs part tokens. A quotation mark stays in its token: the first opens a stretch in which blanks count,
// the second ends the token at once, whatever stands behind it. A held blank belongs to its token.
CString CInstallApp::GetNextToken() {
    if (m_pszCmdCursor == nullptr) m_pszCmdCursor = m_strCmdLine.c_str();
    while (*m_pszCmdCursor == ' ' || *m_pszCmdCursor == '\t')
        ++m_pszCmdCursor;
    CString token;
    bool quoted = false;
    for (; *m_pszCmdCursor != '\0'; ++m_pszCmdCursor) {
        const char c = *m_pszCmdCursor;
        if (!quoted && (c == ' ' || c == '\t')) break;
        token += c == kHeldBlank ? ' ' : c == kHeldTab ? '\t' : c;
        if (c != '"') continue;
        if (quoted) {
            ++m_pszCmdCursor;
            break;
        }
        quoted = true;
    }
    return token;
}

void CRunContext::ParseCommandLine() {
    for (CString token = theApp.GetNextToken(); !token.empty(); token = theApp.GetNextToken())
        ParseSwitch(token);
    if (!m_bSilent) return;
    for (const CString& sentence : m_lstPassedOver)
        Say(sentence);
}

void CRunContext::BadSwitch(const CString& token, std::string_view reason) {
    GetErrorLog() << FormatString1("Bad Cmdline Switch: %1\n", token) << std::flush;
    PassOver(token, reason);
}

// Whether the run is an unattended one, which says so, is known at the end of the line.
void CRunContext::PassOver(const CString& token, std::string_view reason) {
    m_lstPassedOver.push_back(FormatString2("switch passed over: %1: %2", token, reason));
}

// The tests run in this order and the first that fits decides.
void CRunContext::ParseSwitch(const CString& token) {
    if (token.size() > kLongestToken) return BadSwitch(token, "it has more than 259 bytes");
    if (token.front() != '-' && token.front() != '/') return BadSwitch(token, "a switch begins with / or -");
    if (token.size() == 7 && HasWord(token, 1, "nologo")) {
        m_bNoLogo = true;
    } else if (HasWord(token, 1, "s")) {
        m_bSilent = true;
    } else if (HasWord(token, 1, "b")) {
        ParseName(token, m_strBaselineName, m_bCreateBaseline);
    } else if (HasWord(token, 1, "c")) {
        ParseName(token, m_strCurrentName, m_bCreateCurrent);
    } else if (HasWord(token, 1, "res:")) {
        m_strResultsDir = MakeResultsPath(token.substr(5));
        if (m_strResultsDir.find('\\') != CString::npos) return;
        m_strResultsDir.clear();
        PassOver(token, "a directory is known by a separator behind it");
    } else if (HasWord(token, 1, "g")) {
        ParseReportFlags(token);
    } else if (HasWord(token, 1, "d:")) {
        ParseDrive(token);
    } else {
        for (const COptionWord& option : kOptions) {
            if (HasWord(token, 1, option.m_word))
                return ParseOption(token, 1 + option.m_word.size(), this->*option.m_option);
        }
        BadSwitch(token);
    }
}

// /b:name, /bl:name, /bc:name. Forms without the colon are dropped, and the log knows nothing of them.
void CRunContext::ParseName(const CString& token, CString& name, bool& create) {
    static constexpr std::string_view kForm = "a name stands behind a colon, as in /bc:NAME or /b:NAME";
    if (token.size() < 3) return BadSwitch(token, kForm);
    std::size_t value = 0;
    if (token[2] == ':') {
        value = 3;
    } else if (token.size() > 3 && token[3] == ':' && (Lower(token[2]) == 'l' || Lower(token[2]) == 'c')) {
        value = 4;
    } else {
        return PassOver(token, kForm);
    }
    const bool creates = Lower(token[2]) == 'c';
    if (value < token.size() && token[value] == '"') ++value;
    name = token.substr(value);
    if (name.empty()) return BadSwitch(token, "no name stands behind the colon");
    if (name.back() == '"') name.pop_back();
    if (creates) create = true;
}

void CRunContext::ParseReportFlags(const CString& token) {
    m_bGenerateReport = true;
    if (token.size() == 2) return;
    const char first = Lower(token[2]);
    if (first != 'u' && first != 'd') return BadSwitch(token);
    const char second = token.size() > 3 ? Lower(token[3]) : '\0';
    if (first == 'u' || second == 'u') m_bUseExistingReport = true;
    if (first == 'd' || second == 'd') m_bDisplayReport = true;
}

void CRunContext::ParseDrive(const CString& token) {
    if (token.size() < 4 || !IsLetter(token[3])) return BadSwitch(token);
    const char upper = static_cast<char>(Lower(token[3]) - 'a' + 'A');
    const std::uint32_t bit = DriveBit({&upper, 1});
    if (token.size() == 4 || token[4] == '+') {
        m_dwDrivesOn |= bit;
    } else if (token[4] == '-') {
        m_dwDrivesOff |= bit;
    } else {
        BadSwitch(token);
    }
}

// The byte behind the word turns the option on or off; what stands behind that is ignored.
void CRunContext::ParseOption(const CString& token, std::size_t wordLength, bool& option) {
    const char sign = token.size() > wordLength ? token[wordLength] : '+';
    if (sign != '+' && sign != '-') return BadSwitch(token);
    option = sign == '+';
}

}  // namespace delvane
