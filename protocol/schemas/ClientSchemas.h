// Field lists of the client records.
#pragma once

#include "appmgr/records/ClientRecords.h"
#include "protocol/schemas/GenericSchemas.h"

APPMGR_WIRE_RECORD(ClientPlatInfo, WIRE_F(ClientPlatInfo, value), WIRE_F(ClientPlatInfo, text));

// The two client records differ only in their header; one list serves both.
#define APPMGR_CLIENT_INFO_FIELDS(T)                                                          \
  WIRE_F(T, hdr), WIRE_F(T, integer1), WIRE_F(T, integer2), WIRE_F(T, integer3),              \
      WIRE_F(T, integer4), WIRE_F(T, text1), WIRE_F(T, text2), WIRE_F(T, text3),              \
      WIRE_F(T, text5), WIRE_F(T, text6), WIRE_F(T, integer8), WIRE_F(T, integer6),           \
      WIRE_F(T, integer7), WIRE_F(T, integer9), WIRE_ARRAY(T, platformCount, platforms),      \
      WIRE_F(T, integer5), WIRE_F(T, integer10), WIRE_F(T, text4), WIRE_F(T, integer11),      \
      WIRE_F(T, text7), WIRE_F(T, integer12), WIRE_F(T, text8), WIRE_F(T, integer5Whole)
APPMGR_WIRE_RECORD(ClientInfoReq7, APPMGR_CLIENT_INFO_FIELDS(ClientInfoReq7));
APPMGR_WIRE_RECORD(ClientInfoResp7, APPMGR_CLIENT_INFO_FIELDS(ClientInfoResp7));
#undef APPMGR_CLIENT_INFO_FIELDS

APPMGR_WIRE_RECORD(RemoveClientReq, WIRE_F(RemoveClientReq, hdr), WIRE_F(RemoveClientReq, clientId));
APPMGR_WIRE_RECORD(GetPairListForDestinationVolumeGUIDReq,
                   WIRE_F(GetPairListForDestinationVolumeGUIDReq, hdr),
                   WIRE_F(GetPairListForDestinationVolumeGUIDReq, volumeGuid),
                   WIRE_F(GetPairListForDestinationVolumeGUIDReq, option));
APPMGR_WIRE_RECORD(GetPairListForDestinationVolumeGUIDResp,
                   WIRE_F(GetPairListForDestinationVolumeGUIDResp, hdr),
                   WIRE_ARRAY(GetPairListForDestinationVolumeGUIDResp, count, pairIds));
APPMGR_WIRE_RECORD(GetFRSetsWithDestinationClientReq,
                   WIRE_F(GetFRSetsWithDestinationClientReq, hdr),
                   WIRE_F(GetFRSetsWithDestinationClientReq, clientId));
APPMGR_WIRE_RECORD(GetFRSetsWithDestinationClientResp,
                   WIRE_F(GetFRSetsWithDestinationClientResp, hdr),
                   WIRE_ARRAY(GetFRSetsWithDestinationClientResp, count1, ids1),
                   WIRE_ARRAY(GetFRSetsWithDestinationClientResp, count2, ids2),
                   WIRE_ARRAY(GetFRSetsWithDestinationClientResp, count3, ids3));
APPMGR_WIRE_RECORD(GetClientInfoReq, WIRE_F(GetClientInfoReq, hdr),
                   WIRE_F(GetClientInfoReq, propertyName), WIRE_F(GetClientInfoReq, propertyValue));
APPMGR_WIRE_RECORD(GetClientInfoElement, WIRE_F(GetClientInfoElement, integer1),
                   WIRE_F(GetClientInfoElement, text1), WIRE_F(GetClientInfoElement, text2),
                   WIRE_F(GetClientInfoElement, text3));
APPMGR_WIRE_RECORD(GetClientInfoResp, WIRE_F(GetClientInfoResp, hdr),
                   WIRE_ARRAY(GetClientInfoResp, count, clients));
APPMGR_WIRE_RECORD(GetASMIntancesReq, WIRE_F(GetASMIntancesReq, hdr), WIRE_F(GetASMIntancesReq, id1),
                   WIRE_F(GetASMIntancesReq, id2));
APPMGR_WIRE_RECORD(GetASMIntancesResp, WIRE_F(GetASMIntancesResp, hdr),
                   WIRE_ARRAY(GetASMIntancesResp, count, instanceIds));
APPMGR_WIRE_RECORD(HandleFSNodeActivityReq, WIRE_F(HandleFSNodeActivityReq, hdr),
                   WIRE_F(HandleFSNodeActivityReq, clientId), WIRE_F(HandleFSNodeActivityReq, data),
                   WIRE_F(HandleFSNodeActivityReq, flag), WIRE_F(HandleFSNodeActivityReq, value));
APPMGR_WIRE_RECORD(HandleFSNodeActivityResp, WIRE_F(HandleFSNodeActivityResp, hdr),
                   WIRE_F(HandleFSNodeActivityResp, reserved1),
                   WIRE_F(HandleFSNodeActivityResp, reserved2));
