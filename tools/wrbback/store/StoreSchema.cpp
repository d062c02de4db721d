#include "StoreSchema.h"

namespace wrb {

// What people have changed. The newest rows are kept (TextCommands.cpp).
#define WRB_AUDIT_TABLE                                           \
    "CREATE TABLE audit (id {id}, "                               \
    "changed_at {number} NOT NULL, " /* calendar seconds */       \
    "user_name {text} NOT NULL, "                                 \
    "target {text} NOT NULL, " /* a uid, or what else it names */ \
    "setting {text} NOT NULL, old_value {text} NOT NULL, new_value {text} NOT NULL);\n"

// Words in braces: see Dialect.h. Uids are GUID texts, of which upper and lower case are equal.
const char kStoreSchema[] = WRB_AUDIT_TABLE R"sql(
CREATE TABLE agent (
    uid                {caseless} PRIMARY KEY,
    computer           {text}    NOT NULL DEFAULT '',
    ip                 {text}    NOT NULL DEFAULT '',
    domain_name        {text}    NOT NULL DEFAULT '',
    domain_path        {text}    NOT NULL DEFAULT '',
    domain_uid         {text}    NOT NULL DEFAULT '',
    program_version    {text}    NOT NULL DEFAULT '',
    platform           {number} NOT NULL DEFAULT 0,
    architecture       {number} NOT NULL DEFAULT 0,
    status1            {number} NOT NULL DEFAULT 0,
    status2            {number} NOT NULL DEFAULT 0,
    changed            {number} NOT NULL DEFAULT 0,   -- configuration-changed bits
    scan_method        {number} NOT NULL DEFAULT 0,
    uninstall_password {text}    NOT NULL DEFAULT '',
    unload_password    {text}    NOT NULL DEFAULT '',
    privilege1         {number} NOT NULL DEFAULT 0,
    privilege2         {number} NOT NULL DEFAULT 0,
    opp_status         {number} NOT NULL DEFAULT 0,   -- outbreak prevention
    opp_end            {number} NOT NULL DEFAULT 0,
    behaviour_text     {text}    NOT NULL DEFAULT '',
    firewall_policy    {text}    NOT NULL DEFAULT '',
    firewall_number    {number} NOT NULL DEFAULT 0,
    firewall_count1    {number} NOT NULL DEFAULT 0,
    firewall_count2    {number} NOT NULL DEFAULT 0,
    firewall_count3    {number} NOT NULL DEFAULT 0,
    firewall_count4    {number} NOT NULL DEFAULT 0,
    firewall_count5    {number} NOT NULL DEFAULT 0,
    firewall_count6    {number} NOT NULL DEFAULT 0,
    firewall_time      {number} NOT NULL DEFAULT 0    -- calendar seconds
){keyed};

-- Four rows for each agent that has a configuration, none for one that has not.
CREATE TABLE scan (
    uid                   {caseless} NOT NULL REFERENCES agent (uid) ON DELETE CASCADE,
    type                  {number} NOT NULL CHECK (type BETWEEN 0 AND 3),
    flags                 {number} NOT NULL DEFAULT 0,
    compressed_layer      {number} NOT NULL DEFAULT 0,
    ole_layer             {number} NOT NULL DEFAULT 0,
    possible_virus_action {number} NOT NULL DEFAULT 0,
    frequency             {number} NOT NULL DEFAULT 0,  -- this and the next seven: prescheduled scan only
    hour                  {number} NOT NULL DEFAULT 0,
    minute                {number} NOT NULL DEFAULT 0,
    am_pm                 {number} NOT NULL DEFAULT 0,
    day_of_month          {number} NOT NULL DEFAULT 0,
    day_of_week           {number} NOT NULL DEFAULT 0,
    week_ordinal_of_month {number} NOT NULL DEFAULT 0,
    weekday_of_month      {number} NOT NULL DEFAULT 0,
    ext_list              {text}    NOT NULL DEFAULT '',
    move_dir              {text}    NOT NULL DEFAULT '',
    cust_action           {text}    NOT NULL DEFAULT '',
    excluded_folder       {text}    NOT NULL DEFAULT '',
    excluded_file         {text}    NOT NULL DEFAULT '',
    excluded_ext          {text}    NOT NULL DEFAULT '',
    spyware_flags         {number} NOT NULL DEFAULT 0,
    exclude_file_ext_list {text}    NOT NULL DEFAULT '',  -- of the spyware group; not real-time
    PRIMARY KEY (uid, type)
){keyed};

CREATE TABLE spyware_approved (
    uid      {caseless} NOT NULL REFERENCES agent (uid) ON DELETE CASCADE,
    position {number} NOT NULL,
    item     {text}    NOT NULL CHECK (item <> ''),  -- an empty one would end the list on the wire
    PRIMARY KEY (uid, position)
){keyed};

CREATE TABLE restore_session (
    uid      {caseless} NOT NULL REFERENCES agent (uid) ON DELETE CASCADE,
    position {number} NOT NULL,
    session  {text}    NOT NULL CHECK (session <> ''),
    PRIMARY KEY (uid, position)
){keyed};

CREATE TABLE behaviour_policy (
    uid       {caseless} NOT NULL REFERENCES agent (uid) ON DELETE CASCADE,
    position  {number} NOT NULL,
    policy_id {text}    NOT NULL,
    action    {number} NOT NULL,
    enable    {number} NOT NULL,
    PRIMARY KEY (uid, position)
){keyed};

-- Server-wide, in the order of the section ServiceSwitch.
CREATE TABLE service_switch (
    position {number} PRIMARY KEY CHECK (position BETWEEN 0 AND 10),
    enabled  {number} NOT NULL
);
INSERT INTO service_switch (position, enabled)
    VALUES (0, 1), (1, 1), (2, 1), (3, 1), (4, 1), (5, 1), (6, 1), (7, 1), (8, 1), (9, 1), (10, 1);

CREATE TABLE special_log (
    id       {id},
    uid      {caseless} NOT NULL REFERENCES agent (uid) ON DELETE CASCADE,
    log_type {number} NOT NULL,
    text     {text}    NOT NULL,
    received {number} NOT NULL  -- calendar seconds
);
CREATE INDEX special_log_of_agent ON special_log (uid);
-- What the log pool keeps, under the names that its senders use. The columns are those of records/RecordTable.cpp.
CREATE TABLE TBL_CFW_LOG (
    id         {id},
    UID        {caseless} NOT NULL,
    DATE       {text}    NOT NULL,  -- local time of the server
    LOCAL_HOST {text}    NOT NULL,  -- this and the next: 32 hexadecimal digits
    REMOTEHOST {text}    NOT NULL,
    PROTOCOL   {number} NOT NULL,
    TYPE       {number} NOT NULL,
    SUBTYPE    {number} NOT NULL,
    PORT       {number} NOT NULL,
    DIRECTION  {number} NOT NULL,
    PV_NAME    {text}    NOT NULL,
    LOG_TYPE   {number} NOT NULL
);
CREATE TABLE TBL_RESTORE_LOG (
    id        {id},
    LOGID     {text}    NOT NULL,
    UID       {caseless} NOT NULL,
    RECV_TIME {text}    NOT NULL,
    LOG_TYPE  {number} NOT NULL,
    RESULT    {number} NOT NULL
);

-- Messages to the central-management agent and the agent-command service.
CREATE TABLE event (
    id       {id},
    RECEIVED {text} NOT NULL,  -- local time of the server
    SERVICE  {text} NOT NULL,  -- its pipe
    NAME     {text} NOT NULL,
    FIELDS   {text} NOT NULL   -- TAB between them
);
)sql";

namespace {

// Other engines than SQLite began with version 3.
constexpr Migration kMigrations[] = {
    {2, "DROP TRIGGER special_log_limit"},  // the program keeps the limit
    {3, WRB_AUDIT_TABLE},
};
#undef WRB_AUDIT_TABLE

}  // namespace

std::span<const Migration> Migrations() {
    return kMigrations;
}

}  // namespace wrb
