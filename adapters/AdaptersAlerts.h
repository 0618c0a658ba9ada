// The flattening of an alert into its binary record, shared by SendAlert and its tests.
#pragma once

#include "appmgr/EvAlertEx.h"
#include "appmgr/records/AlertRecords.h"

// Fills every field of `req` after the header from `alert` (AlertRecords.h gives the order and
// widths). Texts point into the alert's strings, which must outlive the send. Each non-empty list
// gets an array of exactly its size, allocated with new[]; an empty list, and the reserved list,
// stay count 0 and null. The arrays belong to the caller: ReleaseAlertExData frees them. The
// result is always 0.
int CopyAlertExData(SendAlertExReq3& req, EvAlertEx& alert);

// Frees every array CopyAlertExData allocated in `req` and clears its pointer (counts are left
// as they were). Safe on a record whose arrays were already released.
void ReleaseAlertExData(SendAlertExReq3& req);
