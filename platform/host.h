// The host: the program's own files, documents, standard streams and interruption. Paths are those of
// platform/machine.h.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <ostream>
#include <string_view>
#include <vector>

#include "platform/errors.h"
#include "platform/memory.h"
#include "platform/text.h"

namespace delvane {

class CMachine;

// A file of the program's own under way to its place. Whatever stood there stays whole until Commit, which flushes the
// bytes to the disk and puts the new file in its place in one step. Without Commit nothing is left behind.
class CFileWriter {
public:
    virtual ~CFileWriter() = default;
    virtual void Write(std::string_view bytes) = 0;  // throws CFileError, CInterrupted
    // With the line ends of the system for each line feed; throws the same.
    virtual void WriteText(std::string_view text) { Write(text); }
    virtual void Commit() = 0;  // throws the same
};

// What was read of a file: a buffer that may be larger than the file, and the file's size.
struct CFileBytes {
    CPageBuffer m_buffer;
    std::size_t m_nSize = 0;
    std::uint64_t m_nFileSize = 0;  // of the whole, where the head alone was read

    std::string_view GetBytes() const { return {m_buffer.GetData(), m_nSize}; }
};

class CHost {
public:
    virtual ~CHost() = default;

    virtual CString GetModuleFileName() = 0;  // the program's own file
    // The folder of the documents that came with the program, without a backslash at the end.
    virtual CString GetDocumentFolder() = 0;
    virtual std::uint64_t GetSystemTime() = 0;  // now, in ticks

    // The program's own files. Only regular files are ever opened.
    virtual bool FileExists(std::string_view path) = 0;
    virtual bool DirectoryExists(std::string_view path) = 0;
    virtual bool CreateDirectory(std::string_view path) = 0;  // the last level only
    virtual bool DeleteFile(std::string_view path) = 0;
    // The names of the regular files in a folder, in no order; none where it cannot be read.
    virtual std::vector<CString> ListFiles(std::string_view folder) = 0;
    // ReadFile gives the whole of a file of no more than `limit` bytes, ReadFileHead the first `size` bytes or what
    // there is. Each throws CFileOpenError where there is no such file or it cannot be opened or created, CFileError
    // where it cannot be read or is too large.
    virtual CFileBytes ReadFile(std::string_view path, std::uint64_t limit) = 0;
    virtual CFileBytes ReadFileHead(std::string_view path, std::size_t size) = 0;
    virtual std::unique_ptr<CFileWriter> CreateFile(std::string_view path) = 0;
    // A line feed becomes the line end of the system. Null if it cannot be created.
    virtual std::unique_ptr<std::ostream> CreateTextFile(std::string_view path) = 0;
    // The path as a person on this system would write it, for messages.
    virtual CString GetDisplayPath(std::string_view path) const = 0;
    // The path as the machine has it, a drive path where it lies on a disk of the machine; else as it is.
    virtual CString GetMachinePath(std::string_view path) const = 0;
    // Keeps other processes from the folder of the program's own files until this one ends. False where another one
    // has it.
    virtual bool LockProgramFolder() = 0;
    // Opens a document with the program that the system has for it; nobody waits for it. False where there is none.
    virtual bool OpenDocument(std::string_view path) = 0;
};

// Asked by searches and file writers: throws CInterrupted once a CInterruptGuard has seen a request to end.
void ThrowIfInterrupted();

// While one lives, a request to end the process (SIGINT, SIGTERM, SIGHUP) makes searches and file writers throw
// CInterrupted instead of ending the process at once. They nest, and the outermost decides what becomes of a request:
// one whose owner answers CInterrupted leaves it at that; one that only lets something be cleaned up, as every file
// writer holds, ends the process when it dies.
class CInterruptGuard {
public:
    enum class EOwner { kAnswers, kCleansUp };
    explicit CInterruptGuard(EOwner owner);
    ~CInterruptGuard();
    CInterruptGuard(const CInterruptGuard&) = delete;
    CInterruptGuard& operator=(const CInterruptGuard&) = delete;
};

// Called first of all: lets what the program says reach the console, file or pipe that it was started with, and keeps
// the numbers of the standard streams from the program's files.
void PrepareStandardStreams();

// Made once, by the program's entry: the machine of this build, the one that it runs on or a hosted one, and the host,
// which may look at the machine and dies first.
struct CSystem {
    std::unique_ptr<CMachine> m_pMachine;
    std::unique_ptr<CHost> m_pHost;
};
CSystem MakeSystem();

// The text of the command line behind the program's name. Where the system hands over separate arguments, they stand
// with blanks between them, and a blank or tab inside an argument is held by one of the two bytes below.
constexpr char kHeldBlank = '\x1F';
constexpr char kHeldTab = '\x1E';
CString MakeCommandLine(int argumentCount, const char* const* arguments);

// What was typed as a path, as a path of the program: off Windows an ordinary path of the host takes the host form, a
// relative one from the working directory. A drive path and a path already in that form stay as they are.
CString MakeOwnPath(std::string_view typed);
// The same for what stands behind /res:, where a bare word stays as it is, and on Windows everything.
CString MakeResultsPath(CString typed);

// Whether what the program says goes to a terminal, where a line can be written over.
bool HasTerminal();

}  // namespace delvane
