// JSON in the making, value by value: a line for each of a million nodes must not become a tree first. And the fields
// of nodes, which reviews and exports write alike.
#pragma once

#include <concepts>
#include <cstdint>
#include <ostream>
#include <string_view>
#include <utility>

#include "review/describe.h"

namespace delvane {

class CDelvObj;
enum class EKind : std::uint8_t;
class CSnapshot;

// Values in the order of the calls. A key stands ahead of each value in an object; in a list it is empty. A whole value
// goes to the stream as a line.
class CJson {
public:
    explicit CJson(std::ostream& stream) : m_stream(stream) {}

    // A line of that kind.
    void BeginRecord(std::string_view word) {
        BeginObject();
        Put("record", word);
    }
    void EndRecord() {
        EndLossyObject();
        EndLine();
    }
    void BeginObject(std::string_view key = {}) { Begin(key, '{'); }
    void EndObject() { End('}'); }
    void BeginList(std::string_view key) { Begin(key, '['); }
    void EndList() { End(']'); }
    // Bytes that are no UTF-8 are replaced.
    void Put(std::string_view key, std::string_view text);
    void Put(std::string_view key, std::integral auto value) {
        Name(key);
        if constexpr (std::same_as<decltype(value), bool>) {
            m_strText += value ? "true" : "false";
        } else {
            m_strText += std::to_string(value);
        }
    }
    void PutList(std::string_view key, const auto& values) {
        BeginList(key);
        for (const auto& value : values)
            Put({}, value);
        EndList();
    }
    // An object of these fields, a key and a value in turns.
    void PutObject(std::string_view key, const auto&... fields) {
        BeginObject(key);
        PutFields(fields...);
        EndObject();
    }

    // As if a text had not been UTF-8.
    void NoteLossy() { m_bLossy = true; }
    // With "lossy": true where a text since the end of the last such object was no UTF-8.
    void EndLossyObject() {
        if (std::exchange(m_bLossy, false)) Put("lossy", true);
        EndObject();
    }
    void EndLine();

private:
    void PutFields(std::string_view key, const auto& value, const auto&... more) {
        Put(key, value);
        if constexpr (sizeof...(more) != 0) PutFields(more...);
    }
    void Name(std::string_view key);
    void Quote(std::string_view clean);
    void Begin(std::string_view key, char bracket) {
        Name(key);
        m_strText += bracket;
        m_bFirst = true;
    }
    void End(char bracket) {
        m_strText += bracket;
        m_bFirst = false;
    }

    std::ostream& m_stream;
    CString m_strText;
    bool m_bFirst = true;  // no comma is wanted
    bool m_bLossy = false;
};

// What is known of a node beside its path and name. Nothing for a key.
void WriteNodeFields(CJson& json, const CDelvObj& node, EKind kind);
// name, created, machine, user, system, file.
void WriteSnapshotFields(CJson& json, const CSnapshot& snapshot, const CString& file);

}  // namespace delvane
