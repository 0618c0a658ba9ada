// Field lists of the mailbox-delegate records.
#pragma once

#include "appmgr/records/MailBoxDelegateRecords.h"
#include "protocol/schemas/GenericSchemas.h"

APPMGR_WIRE_RECORD(MailBoxDelegate, WIRE_F(MailBoxDelegate, g1), WIRE_F(MailBoxDelegate, g2),
                   WIRE_F(MailBoxDelegate, g3), WIRE_F(MailBoxDelegate, g4),
                   WIRE_F(MailBoxDelegate, g5), WIRE_F(MailBoxDelegate, g6),
                   WIRE_F(MailBoxDelegate, g7));
APPMGR_WIRE_RECORD(MailBoxDelegateReq, WIRE_F(MailBoxDelegateReq, hdr),
                   WIRE_F(MailBoxDelegateReq, info));
APPMGR_WIRE_RECORD(MailBoxDelegateResp, WIRE_F(MailBoxDelegateResp, hdr),
                   WIRE_F(MailBoxDelegateResp, info));
APPMGR_WIRE_RECORD(SetMailBoxDelegateReq, WIRE_F(SetMailBoxDelegateReq, hdr),
                   WIRE_F(SetMailBoxDelegateReq, info));
APPMGR_WIRE_RECORD(GetMailBoxDelegateListReq, WIRE_F(GetMailBoxDelegateListReq, hdr),
                   WIRE_F(GetMailBoxDelegateListReq, selector));
APPMGR_WIRE_RECORD(GetMailBoxDelegateListResp, WIRE_F(GetMailBoxDelegateListResp, hdr),
                   WIRE_ARRAY(GetMailBoxDelegateListResp, count, infos));
APPMGR_WIRE_RECORD(SetMailBoxDelegateListReq, WIRE_F(SetMailBoxDelegateListReq, hdr),
                   WIRE_ARRAY(SetMailBoxDelegateListReq, count, infos));
APPMGR_WIRE_RECORD(RemoveMailBoxDelegateListReq, WIRE_F(RemoveMailBoxDelegateListReq, hdr),
                   WIRE_ARRAY(RemoveMailBoxDelegateListReq, count, infos));
