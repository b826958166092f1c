// Any bytes as a registry hive with two logs.
//
// The first byte tells what is mended before: bit 0 the sums over the base blocks, bit 1 the hashes of the logs'
// entries, which no fuzzer would ever hit. Two sizes of three bytes follow, those of the hive and of its first log. The
// hive's base block is there without the zeros behind its first 512 bytes.
#include "platform/hosted/registry/regf.h"
#include "platform/hosted/registry/regf_hive.h"
#include "samples/regf_writer.h"
#include "tests/fuzz/hive_checks.h"

namespace {

using namespace delvane;

std::uint32_t NumberAt(std::string_view bytes, std::size_t at, std::size_t size) {
    std::uint32_t number = 0;
    std::memcpy(&number, bytes.data() + at, size);
    return number;
}

void MendEntries(std::string& log) {
    for (std::size_t at = 512; log.size() - at >= 40 && log.compare(at, 4, "HvLE") == 0;) {
        const std::size_t size = NumberAt(log, at + 4, 4);
        if (size < 40 || size > log.size() - at) return;
        const std::uint64_t pages = HashOfLog(std::string_view(log).substr(at + 40, size - 40));
        std::memcpy(log.data() + at + 24, &pages, 8);
        const std::uint64_t head = HashOfLog(std::string_view(log).substr(at, 32));
        std::memcpy(log.data() + at + 32, &head, 8);
        at += size;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kHead = 7;
    if (size < kHead) return 0;
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    std::string_view rest = input.substr(kHead);
    const auto take = [&rest](std::size_t length) {
        std::string part(rest.substr(0, length));
        rest.remove_prefix(part.size());
        return part;
    };
    std::string hive = take(NumberAt(input, 1, 3));
    std::string logs[] = {take(NumberAt(input, 4, 3)), ""};
    logs[1] = rest;
    if (hive.size() >= 512) hive.insert(512, 4096 - 512, '\0');
    for (std::string* const bytes : {&hive, &logs[0], &logs[1]}) {
        if (bytes->size() < 512) continue;
        if ((input[0] & 1) != 0) SetChecksum(*bytes);
        if ((input[0] & 2) != 0 && bytes != &hive) MendEntries(*bytes);
    }
    std::vector<CFileBytes> logBytes;
    for (const std::string& log : logs)
        logBytes.push_back(BytesOf(log));
    CNotice problem;
    const auto opened = CRegfHive::Read(BytesOf(hive), logBytes, "HIVE", problem);
    Expect((opened == nullptr) == !problem.m_strSentence.empty());
    if (opened != nullptr) CheckHive(*opened, hive.size() + logs[0].size() + logs[1].size());
    return 0;
}
