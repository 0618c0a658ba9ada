// Sample records for codec tests, built from field lists alone: FillRecord() gives every
// field of any catalogued record a value (texts sometimes null, arrays of 0 to 3 elements) and
// SameRecord() compares two records field by field, following texts and arrays.
#pragma once

#include <cstdint>
#include <random>
#include <string>

#include "platform/net/Arena.h"
#include "protocol/WireSchema.h"

struct SampleOptions {
  bool nullTexts = true;     // some texts are null
  uint32_t maxArray = 3;     // arrays get 0..maxArray elements
};

// Fills `record` (of schema.size bytes); texts and arrays are placed in `storage`.
void FillRecord(const appmgr::wire::RecordSchema& schema, void* record, std::mt19937_64& rng,
                appmgr::wire::Arena& storage, const SampleOptions& options = {});

// True when every field agrees; otherwise false with the field path in *where.
bool SameRecord(const appmgr::wire::RecordSchema& schema, const void* a, const void* b,
                std::string* where);
