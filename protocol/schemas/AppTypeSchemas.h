// Field lists of the application-type records.
#pragma once

#include "appmgr/records/AppTypeRecords.h"
#include "protocol/schemas/GenericSchemas.h"

APPMGR_WIRE_RECORD(GenericDaxReq, WIRE_F(GenericDaxReq, hdr), WIRE_F(GenericDaxReq, id1),
                   WIRE_F(GenericDaxReq, id2));
APPMGR_WIRE_RECORD(GenericLookupResp2, WIRE_F(GenericLookupResp2, hdr),
                   WIRE_F(GenericLookupResp2, value), WIRE_F(GenericLookupResp2, name));
APPMGR_WIRE_RECORD(ApptypeUpdateReq, WIRE_F(ApptypeUpdateReq, hdr), WIRE_F(ApptypeUpdateReq, id1),
                   WIRE_F(ApptypeUpdateReq, id2), WIRE_F(ApptypeUpdateReq, value));
APPMGR_WIRE_RECORD(GetAppTypePropsReq, WIRE_F(GetAppTypePropsReq, hdr),
                   WIRE_F(GetAppTypePropsReq, clientId), WIRE_F(GetAppTypePropsReq, appTypeId),
                   WIRE_F(GetAppTypePropsReq, table));
APPMGR_WIRE_RECORD(SetAppTypePropsReq, WIRE_F(SetAppTypePropsReq, hdr),
                   WIRE_F(SetAppTypePropsReq, clientId), WIRE_F(SetAppTypePropsReq, appTypeId),
                   WIRE_ARRAY(SetAppTypePropsReq, count, props), WIRE_F(SetAppTypePropsReq, flag));
APPMGR_WIRE_RECORD(RemoveAppTypePropsReq1, WIRE_F(RemoveAppTypePropsReq1, hdr),
                   WIRE_F(RemoveAppTypePropsReq1, clientId),
                   WIRE_F(RemoveAppTypePropsReq1, appTypeId),
                   WIRE_ARRAY(RemoveAppTypePropsReq1, count, props),
                   WIRE_F(RemoveAppTypePropsReq1, flag));
APPMGR_WIRE_RECORD(RemoveAppTypePropsReq2, WIRE_F(RemoveAppTypePropsReq2, hdr),
                   WIRE_F(RemoveAppTypePropsReq2, clientId),
                   WIRE_F(RemoveAppTypePropsReq2, appTypeId),
                   WIRE_ARRAY(RemoveAppTypePropsReq2, count, names),
                   WIRE_F(RemoveAppTypePropsReq2, flag));
APPMGR_WIRE_RECORD(UpdateDCVolPropReq, WIRE_F(UpdateDCVolPropReq, hdr),
                   WIRE_F(UpdateDCVolPropReq, volumeId), WIRE_F(UpdateDCVolPropReq, value1),
                   WIRE_F(UpdateDCVolPropReq, clientId), WIRE_F(UpdateDCVolPropReq, appTypeId),
                   WIRE_F(UpdateDCVolPropReq, text), WIRE_F(UpdateDCVolPropReq, value2),
                   WIRE_F(UpdateDCVolPropReq, value3), WIRE_F(UpdateDCVolPropReq, value4),
                   WIRE_F(UpdateDCVolPropReq, signedValue), WIRE_F(UpdateDCVolPropReq, value5));
