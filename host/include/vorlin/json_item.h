#pragma once

#include <limits>
#include <memory>
#include <string>

#include "vorlin/api.h"

namespace Vorlin {

/** Reads a JSON value member by member. No function throws because of the text.
 *
 *  If several members have the same name, the last one counts. A number beyond the range of a double counts
 *  as the largest double of its sign. */
class VORLIN_API VorlinJSONItem {
  public:
    /** The result of `getInt` for a number that is not an int: it has a fraction or is out of range. */
    static constexpr int kNoInt = std::numeric_limits<int>::min();

    /** Parses `text`. @throws std::bad_alloc without memory. [any] not real-time safe: allocates */
    explicit VorlinJSONItem(const std::string& text);
    /** Takes over another item's value. That item is then not valid. [any] real-time safe */
    VorlinJSONItem(VorlinJSONItem&&) noexcept;
    /** Replaces the value by that of another item, which is then not valid.
     *  [any] not real-time safe: frees memory */
    VorlinJSONItem& operator=(VorlinJSONItem&&) noexcept;
    /** [any] not real-time safe: frees memory */
    ~VorlinJSONItem();

    /** @return true if the text was JSON. A number or an array is valid, but has no members.
     *  [any] real-time safe */
    bool isValid() const;
    /** @return true if the value is an object with a member `name`. [any] real-time safe */
    bool hasItem(const std::string& name) const;

    // Each of these returns the value of a member, or `fallback` if the member is missing or has another
    // type.

    /** @return the text of a string. [any] not real-time safe: allocates */
    std::string getString(const std::string& name, const std::string& fallback = {}) const;
    /** @return a number as an int: 2 for 2.0, but kNoInt for 2.5, not the nearest int and not `fallback`.
     *  [any] real-time safe */
    int getInt(const std::string& name, int fallback = 0) const;
    /** @return the value of a boolean. [any] real-time safe */
    bool getBool(const std::string& name, bool fallback = false) const;
    /** @return a number as a double. [any] real-time safe */
    double getDouble(const std::string& name, double fallback = 0.0) const;

  private:
    struct Document;
    std::unique_ptr<Document> mDocument;
};

}  // namespace Vorlin
