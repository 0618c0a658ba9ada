// Field lists of the subclient records.
#pragma once

#include "appmgr/records/SCRecords.h"
#include "protocol/schemas/AppIdSchemas.h"
#include "protocol/schemas/GenericSchemas.h"

APPMGR_WIRE_RECORD(AppGetSubClientPropertiesResp, WIRE_F(AppGetSubClientPropertiesResp, hdr),
                   WIRE_F(AppGetSubClientPropertiesResp, subclientId),
                   WIRE_F(AppGetSubClientPropertiesResp, name),
                   WIRE_F(AppGetSubClientPropertiesResp, value),
                   WIRE_F(AppGetSubClientPropertiesResp, attr2),
                   WIRE_F(AppGetSubClientPropertiesResp, attr3),
                   WIRE_F(AppGetSubClientPropertiesResp, attr4),
                   WIRE_F(AppGetSubClientPropertiesResp, text),
                   WIRE_F(AppGetSubClientPropertiesResp, parentId));
APPMGR_WIRE_RECORD(SCGUIDLookupReq, WIRE_F(SCGUIDLookupReq, hdr), WIRE_F(SCGUIDLookupReq, guid));
APPMGR_WIRE_RECORD(GenericInitContentResp2, WIRE_F(GenericInitContentResp2, hdr),
                   WIRE_F(GenericInitContentResp2, contentFlag),
                   WIRE_ARRAY(GenericInitContentResp2, count, entries));
APPMGR_WIRE_RECORD(SetStoreAssocReq, WIRE_F(SetStoreAssocReq, hdr), WIRE_F(SetStoreAssocReq, id),
                   WIRE_ARRAY(SetStoreAssocReq, count, names));
APPMGR_WIRE_RECORD(SetActiveDirAssocReq, WIRE_F(SetActiveDirAssocReq, hdr),
                   WIRE_F(SetActiveDirAssocReq, id), WIRE_ARRAY(SetActiveDirAssocReq, count, names));
APPMGR_WIRE_RECORD(GetOverlappingSCListReq, WIRE_F(GetOverlappingSCListReq, hdr),
                   WIRE_F(GetOverlappingSCListReq, id));
APPMGR_WIRE_RECORD(GetOverlappingSCListResp, WIRE_F(GetOverlappingSCListResp, hdr),
                   WIRE_ARRAY(GetOverlappingSCListResp, count, ids));
APPMGR_WIRE_RECORD(BackupHostClientReq, WIRE_F(BackupHostClientReq, hdr),
                   WIRE_F(BackupHostClientReq, id));
APPMGR_WIRE_RECORD(BackupHostClientResp, WIRE_F(BackupHostClientResp, hdr),
                   WIRE_F(BackupHostClientResp, hostId));
APPMGR_WIRE_RECORD(GetFRdataPairPropReq, WIRE_F(GetFRdataPairPropReq, hdr),
                   WIRE_F(GetFRdataPairPropReq, first), WIRE_F(GetFRdataPairPropReq, second),
                   WIRE_F(GetFRdataPairPropReq, third));
APPMGR_WIRE_RECORD(GetFRdataPairPropResp, WIRE_F(GetFRdataPairPropResp, hdr),
                   WIRE_F(GetFRdataPairPropResp, value), WIRE_F(GetFRdataPairPropResp, text));
APPMGR_WIRE_RECORD(SetFRdataPairPropReq, WIRE_F(SetFRdataPairPropReq, hdr),
                   WIRE_F(SetFRdataPairPropReq, first), WIRE_F(SetFRdataPairPropReq, second),
                   WIRE_F(SetFRdataPairPropReq, third), WIRE_F(SetFRdataPairPropReq, text),
                   WIRE_F(SetFRdataPairPropReq, flag));
APPMGR_WIRE_RECORD(GetExtensionsForFileTypeReq, WIRE_F(GetExtensionsForFileTypeReq, hdr),
                   WIRE_F(GetExtensionsForFileTypeReq, fileType));
APPMGR_WIRE_RECORD(GetExtensionsForFileTypeResp, WIRE_F(GetExtensionsForFileTypeResp, hdr),
                   WIRE_F(GetExtensionsForFileTypeResp, extensions));
APPMGR_WIRE_RECORD(GetBackupsetContentReq, WIRE_F(GetBackupsetContentReq, hdr),
                   WIRE_F(GetBackupsetContentReq, appId), WIRE_F(GetBackupsetContentReq, value),
                   WIRE_F(GetBackupsetContentReq, flag));
APPMGR_WIRE_RECORD(GetBackupsetContentResp, WIRE_F(GetBackupsetContentResp, hdr),
                   WIRE_ARRAY(GetBackupsetContentResp, count, ids),
                   WIRE_F(GetBackupsetContentResp, text1), WIRE_F(GetBackupsetContentResp, text2));
APPMGR_WIRE_RECORD(GetReferenceCopySCReq, WIRE_F(GetReferenceCopySCReq, hdr),
                   WIRE_F(GetReferenceCopySCReq, id));
APPMGR_WIRE_RECORD(RefCopySCInfo, WIRE_F(RefCopySCInfo, subclientId));
APPMGR_WIRE_RECORD(GetReferenceCopySCResp, WIRE_F(GetReferenceCopySCResp, hdr),
                   WIRE_ARRAY(GetReferenceCopySCResp, count, copies));
