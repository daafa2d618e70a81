#pragma once

#include <MRZiPhoto/albums/Keyword.h>
#include <MRZiPhoto/images/NSImage.h>
#include <MRZiPhoto/photos/ImageRecRef.h>
#include <MRZiPhoto/photos/Key.h>
#include <MRZiPhoto/photos/RecordDatabase.h>
#include <MRZiPhoto/photos/detail/PhotoFolder.h>

#include "Testing.h"

namespace mrziphoto {

/// Answers what a test has written into its fields.
struct StandInDatabase final : RecordDatabase {
  std::string root = "/new/Library";
  std::optional<std::string> archive = "/old/Library";
  std::string recorded;  // the prefix that `updateImagePath` moves to `root`; empty for none
  std::map<std::int32_t, std::string> folders;
  std::map<std::int32_t, Ref<Keyword>> keywords;
  std::map<std::int32_t, Ref<ImageRecRef>> rolls;
  std::map<std::int32_t, Ref<ImageRecRef>> photos;
  std::map<std::int32_t, Ref<NSBitmapImageRep>> thumbnails;
  std::int32_t version = 200;
  std::string generation = "80";
  mutable int updates = 0;
  Ref<Object> itself;  // for key-value access

  mutable Texts unreadable;

  Ref<Object> object() const override { return itself; }
  void noteUnreadable(std::string_view /*what*/, const std::string& reason) const override {
    unreadable.push_back(reason);
  }

  std::string directory() const override { return root; }
  std::optional<std::string> archivePath() const override { return archive; }
  std::optional<std::string> updateImagePath(const std::string& path) const override {
    ++updates;
    const bool moves = !recorded.empty() && path.starts_with(recorded);
    return moves ? root + path.substr(recorded.size()) : path;
  }
  std::optional<std::string> relativeDirectoryForKey(const Value& key) const override {
    const auto found = folders.find(keyNumber(key).intValue());
    return found == folders.end() ? std::nullopt : std::optional(found->second);
  }
  std::optional<std::string> directoryForKey(const Value& key) const override {
    const auto relative = relativeDirectoryForKey(key);
    return relative ? std::optional(root + "/" + *relative) : std::nullopt;
  }
  Ref<PhotoFolder> photoFolder(const std::string& path) const override {
    return make<PhotoFolder>(path);
  }
  Ref<Keyword> keywordForKey(const Value& key) const override {
    const auto found = keywords.find(key.intValue());
    return found == keywords.end() ? Ref<Keyword>() : found->second;
  }
  List<ImageRecRef> photosForKeys(const List<Key>& keys) const override {
    List<ImageRecRef>::Items found;
    for (const Ref<Key>& key : keys) {
      if (const auto photo = photos.find(key->value().intValue()); photo != photos.end()) {
        found.push_back(photo->second);
      }
    }
    return List<ImageRecRef>(std::move(found));
  }
  Ref<ImageRecRef> rollRecRefForKey(const Value& key) const override {
    const auto found = rolls.find(keyNumber(key).intValue());
    return found == rolls.end() ? Ref<ImageRecRef>() : found->second;
  }
  Ref<NSImage> thumbnailForKeyImageSize(const Value& key, NSSize size) const override {
    const auto found = thumbnails.find(keyNumber(key).intValue());
    Ref<NSImage> image = found == thumbnails.end() ? nullptr : NSImage::initWithSize(size);
    if (image) {
      image->addRepresentation(found->second);
    }
    return image;
  }
  std::int32_t iPhotoLibraryVersion() const override { return version; }
  std::string iPhotoDataVersion() const override { return generation; }
};

}  // namespace mrziphoto
