#pragma once

namespace multiscene {

/// Scene identifiers that the program makes itself start with this character, and no key of a user's value
/// holds it: so key + identifier never is the key of another value.
inline constexpr char kOwnIdentifierMark = '#';

}  // namespace multiscene
