// Examples of the scene format, cut out of a template that plays.
#pragma once

#include <map>
#include <string>

#include "format/KeyTable.h"

namespace multiscene {

/// The dictionaries of the program's example template by the tables that describe them.
class FormatExamples {
  public:
    /// Reads the template's files. Throws platform::Error.
    FormatExamples();

    /// The dictionary that shows most of a table's keys, as property-list text; lists of dictionaries are cut
    /// after two. Empty when the template has none.
    std::string of(const KeyTable& table) const;

  private:
    struct Found {
        std::string text;
        size_t shownKeys = 0;  ///< of the table that it is an example of
        bool isOwn = false;    ///< the table is the most special one of the dictionary

        bool isBetterThan(const Found& other) const;
    };

    void collect(const KeyTable& table, const platform::Value& content);

    std::map<const KeyTable*, Found> best_;
};

}  // namespace multiscene
