// What src/records.ts knows of the records of tarvo.h: a change there does not compile until it is made here, too.

#include <cstddef>

#include "tarvo.h"

static_assert(sizeof(void*) == 4);

static_assert(sizeof(tarvo_value) == 16);
static_assert(offsetof(tarvo_value, type) == 0 && sizeof(tarvo_type) == 4);
static_assert(offsetof(tarvo_value, as) == 8);
static_assert(offsetof(tarvo_bytes, data) == 0 && offsetof(tarvo_bytes, length) == 4);
static_assert(offsetof(tarvo_integers, data) == 0 && offsetof(tarvo_integers, count) == 4);

static_assert(sizeof(tarvo_argument) == 24);
static_assert(offsetof(tarvo_argument, name) == 0);
static_assert(offsetof(tarvo_argument, value) == 8);

static_assert(TARVO_NIL == 0 && TARVO_INTEGER == 1 && TARVO_REAL == 2 && TARVO_BOOLEAN == 3 && TARVO_COLOR == 4);
static_assert(TARVO_BYTES == 5 && TARVO_PICTURE == 6 && TARVO_OBJECT == 7 && TARVO_INTEGERS == 8);
static_assert(TARVO_OK == 0 && TARVO_OPERATION == 1 && TARVO_USE == 2 && TARVO_FILE == 3 && TARVO_LIMIT == 4);
static_assert(TARVO_MEMORY == 5 && TARVO_CANCELLED == 6);
static_assert(TARVO_RGBA32 == 3);
