// The reference host with slots replaced: each replacement is a function without captures.
#pragma once

#include <functional>
#include <vector>

#include "jx/jxhost.h"

namespace jx::test {

// An object as the host made it last, before slots were replaced.
template <typename Object>
Object real;

// What is done to each object of a kind when the host has made it.
template <typename Object>
std::vector<std::function<void(Object &)>> changes;

template <typename Object>
Object *changed(Object *object) {
  if (!object) return object;
  real<Object> = *object;
  for (const auto &change : changes<Object>) change(*object);
  return object;
}

template <typename>
struct MemberOf;
template <typename Owner, typename Type>
struct MemberOf<Type Owner::*> {
  using Object = Owner;
  using Slot = Type;
};

// Replaces a slot, or another field, in every object that the broken kernel makes.
template <auto member>
void replace(typename MemberOf<decltype(member)>::Slot slot) {
  using Object = typename MemberOf<decltype(member)>::Object;
  changes<Object>.push_back([slot](Object &object) { object.*member = slot; });
}

// A transcode slot that changes status, output and count of the real one.
template <auto after>
JXStatus transcode_then(JXTranscoder *self, const void *text, uint32_t bytes, void *room,
                        uint32_t capacity, uint32_t *produced, uint32_t) {
  uint32_t count = 0;
  const JXStatus status =
      real<JXTranscoder>.transcode(self, text, bytes, room, capacity, &count, 0);
  const JXStatus answer = after(status, static_cast<char *>(room), capacity, count);
  if (produced) *produced = count;
  return answer;
}

// An open_file slot that changes request, lock word and status.
template <auto before>
JXOpenFile *open_with(JXElm *self, const JXOpenRequest *asked, uint32_t one, uint32_t word,
                      JXJournal *journal, JXStatus *status) {
  JXOpenRequest request = *asked;
  before(request, word);
  return changed(real<JXElm>.open_file(self, &request, one, word, journal, status));
}

// Forgets all replacements, but for those that route what the host makes through changed().
inline void start_kernel() {
  changes<JXHost> = {}, changes<JXNls> = {}, changes<JXLocale> = {}, changes<JXPool> = {};
  changes<JXLock> = {}, changes<JXTable> = {}, changes<JXTranscoder> = {}, changes<JXElm> = {};
  changes<JXItcp> = {}, changes<JXOpenFile> = {}, changes<JXJournal> = {};
  replace<&JXHost::create_pool>(
      [](JXHost *h, uint32_t, uint32_t, uint32_t, JXOwner, const char *n) {
        return changed(real<JXHost>.create_pool(h, 0, 0, 0, nullptr, n));
      });
  replace<&JXHost::create_lock>([](JXHost *h, uint8_t, uint8_t, uint32_t, const char *n) {
    return changed(real<JXHost>.create_lock(h, 0, 0, 0, n));
  });
  replace<&JXHost::create_table>(
      [](JXHost *h, uint32_t, uint32_t, uint32_t, uint32_t, uint32_t, uint32_t, uint32_t,
         const char *n) { return changed(real<JXHost>.create_table(h, 0, 0, 0, 0, 0, 0, 0, n)); });
  replace<&JXHost::load_extension>([](JXHost *h, const JXChar *name, uint32_t chars, JXOwner) {
    JXExtension *made = real<JXHost>.load_extension(h, name, chars, nullptr);
    if (made && name[2] == 'e') changed(reinterpret_cast<JXElm *>(made));
    if (made && name[2] == 'i') changed(reinterpret_cast<JXItcp *>(made));
    return made;
  });
  replace<&JXElm::open_file>(open_with<[](JXOpenRequest &, uint32_t &) {}>);
  replace<&JXNls::create_transcoder>([](JXNls *n, uint32_t from, uint32_t to, uint32_t, JXOwner) {
    return changed(real<JXNls>.create_transcoder(n, from, to, 0, nullptr));
  });
  replace<&JXNls::create_decoder>([](JXNls *n, uint32_t encoding, uint32_t, uint32_t) {
    return changed(real<JXNls>.create_decoder(n, encoding, 0, 0));
  });
}

// Puts the replacements into a host.
inline void break_kernel(JXHost *host) {
  changed(host->nls);
  changed(host->locale);
  changed(jxhost_journal(host));
  changed(host);
}

}  // namespace jx::test
