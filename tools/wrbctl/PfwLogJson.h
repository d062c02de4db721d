// Records of firewall log files as JSON objects, and back. tools/wrbctl/README.md describes the keys.
#pragma once

#include <json/value.h>

#include "JsonNode.h"
#include "PfwLogRecord.h"

namespace wrb {

// Throws SeedError, with the key, for a value that does not fit the record.
void EncodePfwLogRecord(const JsonNode& line, SWRB_PFW_LOG_ITEM_V0& item);
void EncodePfwLogRecord(const JsonNode& line, SWRB_PFW_LOG_ITEM& item);

Json::Value DecodePfwLogRecord(const SWRB_PFW_LOG_ITEM_V0& item);
Json::Value DecodePfwLogRecord(const SWRB_PFW_LOG_ITEM& item);

}  // namespace wrb
