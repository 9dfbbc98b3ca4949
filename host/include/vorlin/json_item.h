#pragma once

#include <memory>
#include <string>

#include "vorlin/api.h"

namespace Vorlin {

/** One JSON value, read member by member. No function throws for what the text holds.
 *
 *  Of members with the same name the last one counts. A number beyond a double makes the whole text invalid.
 */
class VORLIN_API VorlinJSONItem {
  public:
    explicit VorlinJSONItem(const std::string& text);
    VorlinJSONItem(VorlinJSONItem&&) noexcept;
    VorlinJSONItem& operator=(VorlinJSONItem&&) noexcept;
    ~VorlinJSONItem();

    /** Whether the text was JSON at all. A number or an array is valid and has no members. */
    bool isValid() const;
    bool hasItem(const std::string& name) const;

    // The value of a member; `fallback` when there is no such member, its type is another one, or its value
    // does not fit the result.
    std::string getString(const std::string& name, const std::string& fallback = {}) const;
    /** A number without a fraction that fits an int; 2.0 is such a number, 2.5 is not. */
    int getInt(const std::string& name, int fallback = 0) const;
    bool getBool(const std::string& name, bool fallback = false) const;
    double getDouble(const std::string& name, double fallback = 0.0) const;

  private:
    struct Document;
    std::unique_ptr<Document> mDocument;
};

}  // namespace Vorlin
