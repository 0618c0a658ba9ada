// Field lists of the entity list records. Every array read at the index of a list's driving
// array is declared parallel to it, so the decoder refuses a response whose arrays are shorter
// than the count the client walks.
#pragma once

#include "appmgr/records/ListRecords.h"
#include "protocol/schemas/GenericSchemas.h"

APPMGR_WIRE_RECORD(GetProvidersListReq, WIRE_F(GetProvidersListReq, hdr),
                   WIRE_F(GetProvidersListReq, selector));
APPMGR_WIRE_RECORD(GetAppIdListReq, WIRE_F(GetAppIdListReq, hdr),
                   WIRE_F(GetAppIdListReq, selector1), WIRE_F(GetAppIdListReq, selector2),
                   WIRE_F(GetAppIdListReq, selector3), WIRE_F(GetAppIdListReq, selector4),
                   WIRE_F(GetAppIdListReq, selector5), WIRE_F(GetAppIdListReq, flag));
APPMGR_WIRE_RECORD(GetClientListOfTypeReq, WIRE_F(GetClientListOfTypeReq, hdr),
                   WIRE_F(GetClientListOfTypeReq, selector1),
                   WIRE_F(GetClientListOfTypeReq, selector2), WIRE_F(GetClientListOfTypeReq, flag));
APPMGR_WIRE_RECORD(GetInstanceListReq, WIRE_F(GetInstanceListReq, hdr),
                   WIRE_F(GetInstanceListReq, id1), WIRE_F(GetInstanceListReq, id2),
                   WIRE_F(GetInstanceListReq, id3), WIRE_F(GetInstanceListReq, flag));
APPMGR_WIRE_RECORD(GetBackupsetListReq, WIRE_F(GetBackupsetListReq, hdr),
                   WIRE_F(GetBackupsetListReq, id1), WIRE_F(GetBackupsetListReq, id2),
                   WIRE_F(GetBackupsetListReq, id3), WIRE_F(GetBackupsetListReq, flag));
APPMGR_WIRE_RECORD(GetSubclientListReq, WIRE_F(GetSubclientListReq, hdr),
                   WIRE_F(GetSubclientListReq, id1), WIRE_F(GetSubclientListReq, id2),
                   WIRE_F(GetSubclientListReq, flag));
APPMGR_WIRE_RECORD(GetAllSubclientListReq, WIRE_F(GetAllSubclientListReq, hdr),
                   WIRE_F(GetAllSubclientListReq, id1), WIRE_F(GetAllSubclientListReq, id2),
                   WIRE_F(GetAllSubclientListReq, id3), WIRE_F(GetAllSubclientListReq, id4),
                   WIRE_F(GetAllSubclientListReq, flag));
APPMGR_WIRE_RECORD(GetSiblingSCListReq, WIRE_F(GetSiblingSCListReq, hdr),
                   WIRE_F(GetSiblingSCListReq, subclientId), WIRE_F(GetSiblingSCListReq, flag));
APPMGR_WIRE_RECORD(GetClientListByAppTypeReq, WIRE_F(GetClientListByAppTypeReq, hdr),
                   WIRE_F(GetClientListByAppTypeReq, selector1),
                   WIRE_F(GetClientListByAppTypeReq, selector2));
APPMGR_WIRE_RECORD(GetClientListByAppGroupReq, WIRE_F(GetClientListByAppGroupReq, hdr),
                   WIRE_F(GetClientListByAppGroupReq, selector1),
                   WIRE_F(GetClientListByAppGroupReq, selector2));
APPMGR_WIRE_RECORD(GetAppIdListByArchIdReq, WIRE_F(GetAppIdListByArchIdReq, hdr),
                   WIRE_F(GetAppIdListByArchIdReq, id1), WIRE_F(GetAppIdListByArchIdReq, id2));
APPMGR_WIRE_RECORD(GetClientsByClientGroupReq, WIRE_F(GetClientsByClientGroupReq, hdr),
                   WIRE_F(GetClientsByClientGroupReq, id1), WIRE_F(GetClientsByClientGroupReq, id2),
                   WIRE_F(GetClientsByClientGroupReq, flag));
APPMGR_WIRE_RECORD(GetClientGroupsOfClientReq, WIRE_F(GetClientGroupsOfClientReq, hdr),
                   WIRE_F(GetClientGroupsOfClientReq, id1), WIRE_F(GetClientGroupsOfClientReq, id2),
                   WIRE_F(GetClientGroupsOfClientReq, flag));
APPMGR_WIRE_RECORD(GetEXDMDomainListReq, WIRE_F(GetEXDMDomainListReq, hdr),
                   WIRE_F(GetEXDMDomainListReq, domain));
APPMGR_WIRE_RECORD(GetCloudListReq, WIRE_F(GetCloudListReq, hdr),
                   WIRE_F(GetCloudListReq, selector));
APPMGR_WIRE_RECORD(GetCloudClientListReq, WIRE_F(GetCloudClientListReq, hdr),
                   WIRE_F(GetCloudClientListReq, cloudId));

// The ids come third and drive the walk: the arrays before them are checked against them once
// the whole record is in.
APPMGR_WIRE_RECORD(GetProvidersListResp, WIRE_F(GetProvidersListResp, hdr),
                   WIRE_PARALLEL_ARRAY(GetProvidersListResp, nameCount, names, idCount),
                   WIRE_PARALLEL_ARRAY(GetProvidersListResp, textCount, texts, idCount),
                   WIRE_ARRAY(GetProvidersListResp, idCount, ids),
                   WIRE_PARALLEL_ARRAY(GetProvidersListResp, flagCount, flags, idCount),
                   WIRE_PARALLEL_ARRAY(GetProvidersListResp, valueCount, values, idCount));
APPMGR_WIRE_RECORD(BackupsetListResp, WIRE_F(BackupsetListResp, hdr),
                   WIRE_ARRAY(BackupsetListResp, idCount, ids),
                   WIRE_PARALLEL_ARRAY(BackupsetListResp, nameCount, names, idCount),
                   WIRE_PARALLEL_ARRAY(BackupsetListResp, flagCount, flags, idCount));
APPMGR_WIRE_RECORD(SubclientListResp, WIRE_F(SubclientListResp, hdr),
                   WIRE_ARRAY(SubclientListResp, idCount, ids),
                   WIRE_PARALLEL_ARRAY(SubclientListResp, nameCount, names, idCount),
                   WIRE_PARALLEL_ARRAY(SubclientListResp, flagCount, flags, idCount));
APPMGR_WIRE_RECORD(GetAllSubclientListResp, WIRE_F(GetAllSubclientListResp, hdr),
                   WIRE_ARRAY(GetAllSubclientListResp, idCount, ids),
                   WIRE_PARALLEL_ARRAY(GetAllSubclientListResp, nameCount, names, idCount));
APPMGR_WIRE_RECORD(SiblingSCListResp, WIRE_F(SiblingSCListResp, hdr),
                   WIRE_ARRAY(SiblingSCListResp, idCount, ids),
                   WIRE_PARALLEL_ARRAY(SiblingSCListResp, nameCount, names, idCount),
                   WIRE_F(SiblingSCListResp, value1), WIRE_F(SiblingSCListResp, value2),
                   WIRE_F(SiblingSCListResp, value3), WIRE_F(SiblingSCListResp, value4),
                   WIRE_F(SiblingSCListResp, value5));
APPMGR_WIRE_RECORD(ClientListWOSResp, WIRE_F(ClientListWOSResp, hdr),
                   WIRE_ARRAY(ClientListWOSResp, idCount, ids),
                   WIRE_PARALLEL_ARRAY(ClientListWOSResp, valueCount, values, idCount),
                   WIRE_PARALLEL_ARRAY(ClientListWOSResp, nameCount, names, idCount));
APPMGR_WIRE_RECORD(GetEXDMDomainListResp, WIRE_F(GetEXDMDomainListResp, hdr),
                   WIRE_ARRAY(GetEXDMDomainListResp, idCount, ids),
                   WIRE_PARALLEL_ARRAY(GetEXDMDomainListResp, value1Count, values1, idCount),
                   WIRE_PARALLEL_ARRAY(GetEXDMDomainListResp, value2Count, values2, idCount),
                   WIRE_PARALLEL_ARRAY(GetEXDMDomainListResp, value3Count, values3, idCount),
                   WIRE_PARALLEL_ARRAY(GetEXDMDomainListResp, text1Count, texts1, idCount),
                   WIRE_PARALLEL_ARRAY(GetEXDMDomainListResp, text2Count, texts2, idCount));
APPMGR_WIRE_RECORD(GetCloudListResp, WIRE_F(GetCloudListResp, hdr),
                   WIRE_ARRAY(GetCloudListResp, idCount, ids),
                   WIRE_PARALLEL_ARRAY(GetCloudListResp, nameCount, names, idCount));
APPMGR_WIRE_RECORD(GetCloudClientListResp, WIRE_F(GetCloudClientListResp, hdr),
                   WIRE_ARRAY(GetCloudClientListResp, id1Count, ids1),
                   WIRE_PARALLEL_ARRAY(GetCloudClientListResp, id2Count, ids2, id1Count));
