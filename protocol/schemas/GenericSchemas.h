// Field lists of the headers, the generic records, their elements and the cache records.
#pragma once

#include "appmgr/records/CacheRecords.h"
#include "appmgr/records/GenericRecords.h"
#include "protocol/WireSchema.h"

APPMGR_WIRE_RECORD(AppMgrReqHdr, WIRE_F(AppMgrReqHdr, version), WIRE_F(AppMgrReqHdr, hostName),
                   WIRE_F(AppMgrReqHdr, pid), WIRE_F(AppMgrReqHdr, threadId));
APPMGR_WIRE_RECORD(AppMgrRespHdr, WIRE_F(AppMgrRespHdr, version), WIRE_F(AppMgrRespHdr, errorCode),
                   WIRE_F(AppMgrRespHdr, errorText), WIRE_F(AppMgrRespHdr, reserved));

APPMGR_WIRE_RECORD(AppMgrProps, WIRE_F(AppMgrProps, name), WIRE_F(AppMgrProps, type),
                   WIRE_F(AppMgrProps, value));
APPMGR_WIRE_RECORD(AppStringList, WIRE_F(AppStringList, text));
APPMGR_WIRE_RECORD(LongList, WIRE_F(LongList, id));
APPMGR_WIRE_RECORD(AppMgrContent, WIRE_F(AppMgrContent, text), WIRE_F(AppMgrContent, type));

APPMGR_WIRE_RECORD(GenericResp, WIRE_F(GenericResp, hdr));
APPMGR_WIRE_RECORD(GenericLookupReq, WIRE_F(GenericLookupReq, hdr), WIRE_F(GenericLookupReq, id));
APPMGR_WIRE_RECORD(GenericLookupResp, WIRE_F(GenericLookupResp, hdr),
                   WIRE_F(GenericLookupResp, name));
APPMGR_WIRE_RECORD(GenericLookupReq4, WIRE_F(GenericLookupReq4, hdr), WIRE_F(GenericLookupReq4, id));
APPMGR_WIRE_RECORD(GenericLookupResp4, WIRE_F(GenericLookupResp4, hdr),
                   WIRE_F(GenericLookupResp4, value), WIRE_F(GenericLookupResp4, name),
                   WIRE_F(GenericLookupResp4, text));
APPMGR_WIRE_RECORD(GenericGetPropsReq, WIRE_F(GenericGetPropsReq, hdr),
                   WIRE_F(GenericGetPropsReq, id), WIRE_F(GenericGetPropsReq, table));
APPMGR_WIRE_RECORD(GenericGetPropsResp, WIRE_F(GenericGetPropsResp, hdr),
                   WIRE_ARRAY(GenericGetPropsResp, count, props));
APPMGR_WIRE_RECORD(GenericSetPropsReq, WIRE_F(GenericSetPropsReq, hdr),
                   WIRE_F(GenericSetPropsReq, id), WIRE_ARRAY(GenericSetPropsReq, count, props),
                   WIRE_F(GenericSetPropsReq, flag));
APPMGR_WIRE_RECORD(GenericRemovePropsReq1, WIRE_F(GenericRemovePropsReq1, hdr),
                   WIRE_F(GenericRemovePropsReq1, id),
                   WIRE_ARRAY(GenericRemovePropsReq1, count, props),
                   WIRE_F(GenericRemovePropsReq1, flag));
APPMGR_WIRE_RECORD(GenericRemovePropsReq2, WIRE_F(GenericRemovePropsReq2, hdr),
                   WIRE_F(GenericRemovePropsReq2, id),
                   WIRE_ARRAY(GenericRemovePropsReq2, count, names),
                   WIRE_F(GenericRemovePropsReq2, flag));
APPMGR_WIRE_RECORD(GenericUpdateReq2, WIRE_F(GenericUpdateReq2, hdr), WIRE_F(GenericUpdateReq2, id),
                   WIRE_F(GenericUpdateReq2, value), WIRE_F(GenericUpdateReq2, name));
APPMGR_WIRE_RECORD(GenericStringListResp, WIRE_F(GenericStringListResp, hdr),
                   WIRE_ARRAY(GenericStringListResp, count, texts));
APPMGR_WIRE_RECORD(GenericIdListResp, WIRE_F(GenericIdListResp, hdr),
                   WIRE_ARRAY(GenericIdListResp, count, ids));
APPMGR_WIRE_RECORD(GenericListPairReq, WIRE_F(GenericListPairReq, hdr),
                   WIRE_F(GenericListPairReq, selector), WIRE_F(GenericListPairReq, option));
APPMGR_WIRE_RECORD(GenericListPairResp, WIRE_F(GenericListPairResp, hdr),
                   WIRE_ARRAY(GenericListPairResp, idCount, ids),
                   WIRE_PARALLEL_ARRAY(GenericListPairResp, nameCount, names, idCount));
APPMGR_WIRE_RECORD(GenericUpdateContentReq, WIRE_F(GenericUpdateContentReq, hdr),
                   WIRE_F(GenericUpdateContentReq, id),
                   WIRE_ARRAY(GenericUpdateContentReq, count1, content1),
                   WIRE_ARRAY(GenericUpdateContentReq, count2, content2),
                   WIRE_F(GenericUpdateContentReq, flag1), WIRE_F(GenericUpdateContentReq, flag2),
                   WIRE_F(GenericUpdateContentReq, flag3));
APPMGR_WIRE_RECORD(GenericInitContentReq, WIRE_F(GenericInitContentReq, hdr),
                   WIRE_F(GenericInitContentReq, id), WIRE_F(GenericInitContentReq, value));
APPMGR_WIRE_RECORD(RecDelAppIdsReq, WIRE_F(RecDelAppIdsReq, hdr), WIRE_F(RecDelAppIdsReq, id),
                   WIRE_F(RecDelAppIdsReq, secondId), WIRE_F(RecDelAppIdsReq, level));
APPMGR_WIRE_RECORD(RecDelAppIdsReq1, WIRE_F(RecDelAppIdsReq1, hdr), WIRE_F(RecDelAppIdsReq1, id),
                   WIRE_F(RecDelAppIdsReq1, secondId), WIRE_F(RecDelAppIdsReq1, level),
                   WIRE_F(RecDelAppIdsReq1, option));

APPMGR_WIRE_RECORD(EnableServerCacheReq, WIRE_F(EnableServerCacheReq, hdr),
                   WIRE_F(EnableServerCacheReq, jobId));
APPMGR_WIRE_RECORD(EnableServerCacheResp, WIRE_F(EnableServerCacheResp, hdr),
                   WIRE_F(EnableServerCacheResp, xmlText));
