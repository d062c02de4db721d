#include "StoreSchema.h"

namespace wrb {

// Uids are GUID texts: upper and lower case are equal.
const char kStoreSchema[] = R"sql(
PRAGMA application_id = 0x57524244;
PRAGMA user_version = 2;

CREATE TABLE agent (
    uid                TEXT PRIMARY KEY COLLATE NOCASE,
    computer           TEXT    NOT NULL DEFAULT '',
    ip                 TEXT    NOT NULL DEFAULT '',
    domain_name        TEXT    NOT NULL DEFAULT '',
    domain_path        TEXT    NOT NULL DEFAULT '',
    domain_uid         TEXT    NOT NULL DEFAULT '',
    program_version    TEXT    NOT NULL DEFAULT '',
    platform           INTEGER NOT NULL DEFAULT 0,
    architecture       INTEGER NOT NULL DEFAULT 0,
    status1            INTEGER NOT NULL DEFAULT 0,
    status2            INTEGER NOT NULL DEFAULT 0,
    changed            INTEGER NOT NULL DEFAULT 0,   -- configuration-changed bits
    scan_method        INTEGER NOT NULL DEFAULT 0,
    uninstall_password TEXT    NOT NULL DEFAULT '',
    unload_password    TEXT    NOT NULL DEFAULT '',
    privilege1         INTEGER NOT NULL DEFAULT 0,
    privilege2         INTEGER NOT NULL DEFAULT 0,
    opp_status         INTEGER NOT NULL DEFAULT 0,   -- outbreak prevention
    opp_end            INTEGER NOT NULL DEFAULT 0,
    behaviour_text     TEXT    NOT NULL DEFAULT '',
    firewall_policy    TEXT    NOT NULL DEFAULT '',
    firewall_number    INTEGER NOT NULL DEFAULT 0,
    firewall_count1    INTEGER NOT NULL DEFAULT 0,
    firewall_count2    INTEGER NOT NULL DEFAULT 0,
    firewall_count3    INTEGER NOT NULL DEFAULT 0,
    firewall_count4    INTEGER NOT NULL DEFAULT 0,
    firewall_count5    INTEGER NOT NULL DEFAULT 0,
    firewall_count6    INTEGER NOT NULL DEFAULT 0,
    firewall_time      INTEGER NOT NULL DEFAULT 0    -- calendar seconds
) WITHOUT ROWID;

-- Four rows for each agent that has a configuration, none for one that has not.
CREATE TABLE scan (
    uid                   TEXT    NOT NULL COLLATE NOCASE REFERENCES agent (uid) ON DELETE CASCADE,
    type                  INTEGER NOT NULL CHECK (type BETWEEN 0 AND 3),
    flags                 INTEGER NOT NULL DEFAULT 0,
    compressed_layer      INTEGER NOT NULL DEFAULT 0,
    ole_layer             INTEGER NOT NULL DEFAULT 0,
    possible_virus_action INTEGER NOT NULL DEFAULT 0,
    frequency             INTEGER NOT NULL DEFAULT 0,  -- this and the next seven: prescheduled scan only
    hour                  INTEGER NOT NULL DEFAULT 0,
    minute                INTEGER NOT NULL DEFAULT 0,
    am_pm                 INTEGER NOT NULL DEFAULT 0,
    day_of_month          INTEGER NOT NULL DEFAULT 0,
    day_of_week           INTEGER NOT NULL DEFAULT 0,
    week_ordinal_of_month INTEGER NOT NULL DEFAULT 0,
    weekday_of_month      INTEGER NOT NULL DEFAULT 0,
    ext_list              TEXT    NOT NULL DEFAULT '',
    move_dir              TEXT    NOT NULL DEFAULT '',
    cust_action           TEXT    NOT NULL DEFAULT '',
    excluded_folder       TEXT    NOT NULL DEFAULT '',
    excluded_file         TEXT    NOT NULL DEFAULT '',
    excluded_ext          TEXT    NOT NULL DEFAULT '',
    spyware_flags         INTEGER NOT NULL DEFAULT 0,
    exclude_file_ext_list TEXT    NOT NULL DEFAULT '',  -- of the spyware group; not real-time
    PRIMARY KEY (uid, type)
) WITHOUT ROWID;

CREATE TABLE spyware_approved (
    uid      TEXT    NOT NULL COLLATE NOCASE REFERENCES agent (uid) ON DELETE CASCADE,
    position INTEGER NOT NULL,
    item     TEXT    NOT NULL CHECK (item <> ''),  -- an empty one would end the list on the wire
    PRIMARY KEY (uid, position)
) WITHOUT ROWID;

CREATE TABLE restore_session (
    uid      TEXT    NOT NULL COLLATE NOCASE REFERENCES agent (uid) ON DELETE CASCADE,
    position INTEGER NOT NULL,
    session  TEXT    NOT NULL CHECK (session <> ''),
    PRIMARY KEY (uid, position)
) WITHOUT ROWID;

CREATE TABLE behaviour_policy (
    uid       TEXT    NOT NULL COLLATE NOCASE REFERENCES agent (uid) ON DELETE CASCADE,
    position  INTEGER NOT NULL,
    policy_id TEXT    NOT NULL,
    action    INTEGER NOT NULL,
    enable    INTEGER NOT NULL,
    PRIMARY KEY (uid, position)
) WITHOUT ROWID;

-- Server-wide, in the order of the section ServiceSwitch.
CREATE TABLE service_switch (
    position INTEGER PRIMARY KEY CHECK (position BETWEEN 0 AND 10),
    enabled  INTEGER NOT NULL
);
INSERT INTO service_switch (position, enabled)
    VALUES (0, 1), (1, 1), (2, 1), (3, 1), (4, 1), (5, 1), (6, 1), (7, 1), (8, 1), (9, 1), (10, 1);

CREATE TABLE special_log (
    id       INTEGER PRIMARY KEY,
    uid      TEXT    NOT NULL COLLATE NOCASE REFERENCES agent (uid) ON DELETE CASCADE,
    log_type INTEGER NOT NULL,
    text     TEXT    NOT NULL,
    received INTEGER NOT NULL  -- calendar seconds
);
CREATE INDEX special_log_of_agent ON special_log (uid);
-- Agents write these, so there must be an end to them.
CREATE TRIGGER special_log_limit AFTER INSERT ON special_log
BEGIN
    DELETE FROM special_log WHERE id <= NEW.id - 10000;
END;

-- What the log pool keeps, under the names that its senders use. The columns are those of records/RecordTable.cpp.
CREATE TABLE TBL_CFW_LOG (
    id         INTEGER PRIMARY KEY,
    UID        TEXT    NOT NULL COLLATE NOCASE,
    DATE       TEXT    NOT NULL,  -- local time of the server
    LOCAL_HOST TEXT    NOT NULL,  -- this and the next: 32 hexadecimal digits
    REMOTEHOST TEXT    NOT NULL,
    PROTOCOL   INTEGER NOT NULL,
    TYPE       INTEGER NOT NULL,
    SUBTYPE    INTEGER NOT NULL,
    PORT       INTEGER NOT NULL,
    DIRECTION  INTEGER NOT NULL,
    PV_NAME    TEXT    NOT NULL,
    LOG_TYPE   INTEGER NOT NULL
);
CREATE TABLE TBL_RESTORE_LOG (
    id        INTEGER PRIMARY KEY,
    LOGID     TEXT    NOT NULL,
    UID       TEXT    NOT NULL COLLATE NOCASE,
    RECV_TIME TEXT    NOT NULL,
    LOG_TYPE  INTEGER NOT NULL,
    RESULT    INTEGER NOT NULL
);

-- Messages to the central-management agent and the agent-command service.
CREATE TABLE event (
    id       INTEGER PRIMARY KEY,
    RECEIVED TEXT NOT NULL,  -- local time of the server
    SERVICE  TEXT NOT NULL,  -- its pipe
    NAME     TEXT NOT NULL,
    FIELDS   TEXT NOT NULL   -- TAB between them
);
)sql";

}  // namespace wrb
