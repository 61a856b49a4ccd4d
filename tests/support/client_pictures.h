#pragma once

// Client pictures filled in by their record, without any call of the plugin.

#include "pictures.h"

namespace tarvo::test {

// In memory of its own, 16, 24 or 32 bits deep, random pixels; with `masked` also a mask of random levels.
ObjectRef client_in_own_memory(Session& session, Random& random, int width, int height, int depth, bool masked);
// Backed by the host picture.
ObjectRef client_of_picture(Session& session, const ObjectRef& picture);

bool is_client(const Value& value);
// True when its host picture or its own memory has a mask.
bool client_has_mask(const ObjectRef& client);
// Of the image in own memory; 0 for a client picture without.
Size own_size(const ObjectRef& client);
int own_depth(const ObjectRef& client);
// The host picture that backs it; empty for own memory.
ObjectRef picture_behind(Session& session, const ObjectRef& client);
// A client picture whose pixels could not be made keeps a reference that nobody holds: drops these. How many there
// were.
int drop_refused_clients(Session& session);
// All bytes of the record and of its own memory.
std::vector<std::uint8_t> client_bytes(const ObjectRef& client);

}  // namespace tarvo::test
