#pragma once

#include <limits>
#include <memory>
#include <string>

#include "vorlin/api.h"

namespace Vorlin {

/** One JSON value, read member by member. No function throws for what the text holds.
 *
 *  Of members with the same name the last one counts. A number beyond a double counts as the largest one. */
class VORLIN_API VorlinJSONItem {
  public:
    /** `getInt` gives this for a number that is no int: one with a fraction, or beyond the range. */
    static constexpr int kNoInt = std::numeric_limits<int>::min();

    explicit VorlinJSONItem(const std::string& text);
    VorlinJSONItem(VorlinJSONItem&&) noexcept;
    VorlinJSONItem& operator=(VorlinJSONItem&&) noexcept;
    ~VorlinJSONItem();

    /** Whether the text was JSON at all. A number or an array is valid and has no members. */
    bool isValid() const;
    bool hasItem(const std::string& name) const;

    // The value of a member; `fallback` when there is no such member or its type is another one.
    std::string getString(const std::string& name, const std::string& fallback = {}) const;
    /** 2.0 is an int, 2.5 is kNoInt: another number is neither the nearest int nor the fallback. */
    int getInt(const std::string& name, int fallback = 0) const;
    bool getBool(const std::string& name, bool fallback = false) const;
    double getDouble(const std::string& name, double fallback = 0.0) const;

  private:
    struct Document;
    std::unique_ptr<Document> mDocument;
};

}  // namespace Vorlin
