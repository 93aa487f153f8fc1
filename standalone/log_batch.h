#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qv_standalone {

/// Finished records on their way to a file. Used by one thread at a time.
class LogBatch {
  public:
    /// Adds one record, whose text is `stamp` and `line`, or raises std::bad_alloc and adds nothing.
    void Append(std::string_view stamp, std::string_view line) {
        const std::size_t before = m_text.size();
        try {
            m_text.append(stamp).append(line);
            m_ends.push_back(m_text.size());
        } catch (...) {
            m_text.resize(before);
            throw;
        }
    }

    bool empty() const { return m_ends.empty(); }
    std::size_t bytes() const { return m_text.size(); }
    std::size_t records() const { return m_ends.size(); }

    /// Calls `use` with the texts of the records in their order, of as many at once as have at most `size`
    /// bytes together; of one, where that has more.
    template <class Use>
    void ForEachPart(std::size_t size, Use use) const {
        std::size_t begin = 0;
        std::size_t end = 0;
        for (const std::size_t next : m_ends) {
            if (next - begin > size && end > begin) {
                use(std::string_view(m_text).substr(begin, end - begin));
                begin = end;
            }
            end = next;
        }
        if (end > begin) {
            use(std::string_view(m_text).substr(begin, end - begin));
        }
    }

    /// Forgets the records. The memory stays for the next ones, unless there was an uncommon lot of them.
    void Clear() noexcept {
        constexpr std::size_t kKept = 1 << 20;
        if (m_text.capacity() > kKept) {
            LogBatch().swap(*this);
        }
        m_text.clear();
        m_ends.clear();
    }

    void swap(LogBatch& other) noexcept {
        m_text.swap(other.m_text);
        m_ends.swap(other.m_ends);
    }

  private:
    std::string m_text;
    std::vector<std::size_t> m_ends;  // where each record ends in it
};

}  // namespace qv_standalone
