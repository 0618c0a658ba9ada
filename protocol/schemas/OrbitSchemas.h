// Field lists of the domain (Orbit) records.
#pragma once

#include "appmgr/records/OrbitRecords.h"
#include "protocol/schemas/GenericSchemas.h"

APPMGR_WIRE_RECORD(OrbitInfoReq1, WIRE_F(OrbitInfoReq1, hdr), WIRE_F(OrbitInfoReq1, id1),
                   WIRE_F(OrbitInfoReq1, id2), WIRE_F(OrbitInfoReq1, id3),
                   WIRE_F(OrbitInfoReq1, id4), WIRE_F(OrbitInfoReq1, text1),
                   WIRE_F(OrbitInfoReq1, text2), WIRE_F(OrbitInfoReq1, text3),
                   WIRE_F(OrbitInfoReq1, text4), WIRE_F(OrbitInfoReq1, text5),
                   WIRE_F(OrbitInfoReq1, text6), WIRE_F(OrbitInfoReq1, number));
APPMGR_WIRE_RECORD(OrbitInfoResp1, WIRE_F(OrbitInfoResp1, hdr), WIRE_F(OrbitInfoResp1, id1),
                   WIRE_F(OrbitInfoResp1, id2), WIRE_F(OrbitInfoResp1, id3),
                   WIRE_F(OrbitInfoResp1, id4), WIRE_F(OrbitInfoResp1, text1),
                   WIRE_F(OrbitInfoResp1, text2), WIRE_F(OrbitInfoResp1, text3),
                   WIRE_F(OrbitInfoResp1, text4), WIRE_F(OrbitInfoResp1, text5),
                   WIRE_F(OrbitInfoResp1, text6), WIRE_F(OrbitInfoResp1, number));
APPMGR_WIRE_RECORD(RemoveOrbitReq, WIRE_F(RemoveOrbitReq, hdr), WIRE_F(RemoveOrbitReq, id));
