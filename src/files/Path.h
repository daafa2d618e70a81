#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "../values/Export.h"

/// Paths as texts, UTF-8. Only `standardized` (for "~") and `resolvingSymlinks` ask the system
/// anything; the others look at the text alone.
namespace mrziphoto::path {

/// The path of an entry in a folder. An empty folder gives the component, an empty component the
/// folder. Slashes that follow each other become one, and none is left at the end.
[[nodiscard]] MRZIPHOTO_EXPORT std::string join(std::string_view folder,
                                                std::string_view component);
/// What stands behind the last slash, slashes at the end apart: "b" for "/a/b" and for "/a/b/".
/// "/" for the root, empty for an empty path.
[[nodiscard]] MRZIPHOTO_EXPORT std::string lastComponent(std::string_view path);
/// The path without its last component: "/a" for "/a/b", "/" for "/a" and for "/", empty for "a".
[[nodiscard]] MRZIPHOTO_EXPORT std::string withoutLastComponent(std::string_view path);
/// What stands behind the last point of the last component; empty without a point, or when nothing
/// stands before it (".name") or behind it ("name.").
[[nodiscard]] MRZIPHOTO_EXPORT std::string extension(std::string_view path);
/// The path, slashes at its end left out, with a point and the extension appended: "123" and "attr"
/// give "123.attr". A path without a name, empty or the root, stays as it is.
[[nodiscard]] MRZIPHOTO_EXPORT std::string withExtension(std::string_view path,
                                                         std::string_view extension);
/// The components in order. A slash at the beginning is the component "/", and so is one at the
/// end; empty components are left out.
[[nodiscard]] MRZIPHOTO_EXPORT std::vector<std::string> components(std::string_view path);
/// The components joined; empty for none. A first component "/" makes the path absolute.
[[nodiscard]] MRZIPHOTO_EXPORT std::string fromComponents(
    const std::vector<std::string>& components);

/// The path with "~" or "~user" at its beginning replaced by that user's home folder (left as it is
/// for an unknown user), without ".", without doubled slashes and without a slash at the end. In an
/// absolute path ".." takes the component before it away, as texts and without looking for links;
/// in a relative one it stays.
[[nodiscard]] MRZIPHOTO_EXPORT std::string standardized(std::string_view path);
/// The path with all its symbolic links resolved; a relative path stays relative where that is
/// possible. A path at which nothing exists is answered as it is.
[[nodiscard]] MRZIPHOTO_EXPORT std::string resolvingSymlinks(std::string_view path);

}  // namespace mrziphoto::path
