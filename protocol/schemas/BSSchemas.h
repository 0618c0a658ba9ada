// Field lists of the backup-set records.
#pragma once

#include "appmgr/records/BSRecords.h"
#include "protocol/schemas/GenericSchemas.h"

APPMGR_WIRE_RECORD(GetDefaultSCForStoreReq, WIRE_F(GetDefaultSCForStoreReq, hdr),
                   WIRE_F(GetDefaultSCForStoreReq, id), WIRE_F(GetDefaultSCForStoreReq, storeName));
APPMGR_WIRE_RECORD(GetDefaultSCForStoreResp, WIRE_F(GetDefaultSCForStoreResp, hdr),
                   WIRE_F(GetDefaultSCForStoreResp, subclientId));
APPMGR_WIRE_RECORD(GetStoreListReq, WIRE_F(GetStoreListReq, hdr), WIRE_F(GetStoreListReq, id));
APPMGR_WIRE_RECORD(getFRdataInterfacePairReq, WIRE_F(getFRdataInterfacePairReq, hdr),
                   WIRE_F(getFRdataInterfacePairReq, id), WIRE_F(getFRdataInterfacePairReq, pairId),
                   WIRE_F(getFRdataInterfacePairReq, selector));
APPMGR_WIRE_RECORD(getFRdataInterfacePairResp, WIRE_F(getFRdataInterfacePairResp, hdr),
                   WIRE_F(getFRdataInterfacePairResp, first),
                   WIRE_F(getFRdataInterfacePairResp, second));
APPMGR_WIRE_RECORD(GetClientIdFromBackupSetReq, WIRE_F(GetClientIdFromBackupSetReq, hdr),
                   WIRE_F(GetClientIdFromBackupSetReq, id));
APPMGR_WIRE_RECORD(GetClientIdFromBackupSetResp, WIRE_F(GetClientIdFromBackupSetResp, hdr),
                   WIRE_F(GetClientIdFromBackupSetResp, clientId));
APPMGR_WIRE_RECORD(CheckPairConflictReq, WIRE_F(CheckPairConflictReq, hdr),
                   WIRE_F(CheckPairConflictReq, id), WIRE_F(CheckPairConflictReq, text1),
                   WIRE_F(CheckPairConflictReq, text2));
APPMGR_WIRE_RECORD(DataPairConflict_1, WIRE_F(DataPairConflict_1, id1), WIRE_F(DataPairConflict_1, id2),
                   WIRE_F(DataPairConflict_1, id3), WIRE_F(DataPairConflict_1, id4),
                   WIRE_F(DataPairConflict_1, text1), WIRE_F(DataPairConflict_1, text2),
                   WIRE_F(DataPairConflict_1, text3), WIRE_F(DataPairConflict_1, text4),
                   WIRE_F(DataPairConflict_1, value));
APPMGR_WIRE_RECORD(CheckPairConflictResp, WIRE_F(CheckPairConflictResp, hdr),
                   WIRE_F(CheckPairConflictResp, pair1), WIRE_F(CheckPairConflictResp, pair2),
                   WIRE_F(CheckPairConflictResp, conflict));
APPMGR_WIRE_RECORD(APPFLRSystemStateInfoReq, WIRE_F(APPFLRSystemStateInfoReq, hdr),
                   WIRE_F(APPFLRSystemStateInfoReq, id), WIRE_F(APPFLRSystemStateInfoReq, name));
APPMGR_WIRE_RECORD(APPFLRSystemStatePair, WIRE_F(APPFLRSystemStatePair, id),
                   WIRE_F(APPFLRSystemStatePair, name));
APPMGR_WIRE_RECORD(APPFLRSystemStateInfo, WIRE_F(APPFLRSystemStateInfo, id),
                   WIRE_ARRAY(APPFLRSystemStateInfo, pairCount, pairs),
                   WIRE_F(APPFLRSystemStateInfo, value), WIRE_F(APPFLRSystemStateInfo, text1),
                   WIRE_F(APPFLRSystemStateInfo, text2));
APPMGR_WIRE_RECORD(APPFLRSystemStateInfoResp, WIRE_F(APPFLRSystemStateInfoResp, hdr),
                   WIRE_ARRAY(APPFLRSystemStateInfoResp, count, infos));
