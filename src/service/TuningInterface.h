/*
 * The tuning interface: how a program reads and changes the configuration settings of a database
 * engine. Plain C, so that any engine's vendor can supply the library behind it; libtn.so.1 of
 * this project is one such library.
 *
 * Conventions
 * - Text is 8-bit and NUL-terminated in both directions.
 * - Every operation but TnStart, TnStop and TnIsSettingAvailable gives a TnStatus:
 *   TN_SUCCESS or one of the codes below. After a failure the out-arguments hold nothing of use,
 *   except the size that TN_BUFFER_TOO_SMALL reports.
 * - An in/out count or size holds the capacity of the caller's array before the call and what was
 *   written (elements, or bytes without the NUL) after it. With TN_BUFFER_TOO_SMALL one that was
 *   too small holds the capacity that is needed (for text: bytes with the NUL). Nothing is ever
 * cut.
 * - One thread at a time.
 */
#ifndef KNOB_SERVICE_TUNING_INTERFACE_H
#define KNOB_SERVICE_TUNING_INTERFACE_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef int16_t TnStatus;
typedef int32_t TnHandle;
typedef int32_t TnValueType;
typedef int16_t TnValueSelector;

/* Handles: what TnConnectServer writes, or one of these. */
enum {
  TN_LOCAL_HANDLE = -1, /* the local engine's default store; needs no TnConnectServer */
  TN_NO_HANDLE = -2     /* a caller's mark for "not connected"; never passed to the interface */
};

/* Value types. 3 selects exactly one item, 4 any number of them. */
enum {
  TN_TYPE_BOOLEAN = 0,
  TN_TYPE_INTEGER = 1,
  TN_TYPE_STRING = 2,
  TN_TYPE_SINGLE_SELECTION = 3,
  TN_TYPE_MULTIPLE_SELECTION = 4
};

/* Which value of a setting an operation addresses. Setters take the current one only. */
enum { TN_DEFAULT_VALUE = 1, TN_CURRENT_VALUE = 2 };

/* Maxima that stand for what the machine has rather than for a number. */
enum { TN_MAX_MEMORY = -1, TN_MAX_DISK = -2, TN_MAX_MEMORY_AND_DISK = -129 };

/* Capacities in bytes (with the NUL) and elements that callers provide. */
enum {
  TN_CONNECT_TEXT_SIZE = 256, /* server, user, password */
  TN_NAME_SIZE = 256,         /* names in the records */
  TN_TEXT_SIZE = 1024,        /* string values, item texts, first try for a description */
  TN_WORD_SIZE = 128,         /* the words of a boolean setting */
  TN_CATEGORY_CAPACITY = 30,
  TN_SETTING_CAPACITY = 50, /* settings of one category */
  TN_SELECTION_CAPACITY = 1024
};

/* Status codes. The bundle TNMSG holds a text for each. Codes stay below 8000: those from there on
   are the calling program's own. */
enum {
  TN_SUCCESS = 0,

  TN_INVALID_ARGUMENT = 7001,
  TN_INVALID_HANDLE = 7002,
  TN_BUFFER_TOO_SMALL = 7003,
  TN_UNKNOWN_CATEGORY = 7004,
  TN_UNKNOWN_SETTING = 7005,
  TN_SETTING_UNAVAILABLE = 7006,
  TN_INVALID_SELECTOR = 7007,
  TN_WRONG_VALUE_TYPE = 7008,
  TN_UNKNOWN_ITEM = 7009,
  TN_DEFAULT_NOT_WRITABLE = 7010,
  TN_OUT_OF_MEMORY = 7011,
  TN_INTERNAL_ERROR = 7012,
  TN_TOO_MANY_SETTINGS = 7013,

  /* Opening a connection. */
  TN_SERVER_NAME_TOO_LONG = 7101,
  TN_USER_NAME_TOO_LONG = 7102,
  TN_PASSWORD_TOO_LONG = 7103,
  TN_UNKNOWN_SERVER_FORM = 7104,
  TN_LOCAL_ENGINE_HAS_NO_USERS = 7105,
  TN_MODULE_NOT_INSTALLED = 7106,
  TN_MODULE_UNUSABLE = 7107,

  /* Values that an engine refuses. */
  TN_VALUE_TOO_LONG = 7201,
  TN_VALUE_OUT_OF_RANGE = 7202,
  TN_NOT_A_CHOICE = 7203,
  TN_ONE_CHOICE_REQUIRED = 7204,
  TN_DUPLICATE_CHOICE = 7205,
  TN_EMPTY_VALUE = 7206,
  TN_CONTROL_CHARACTER = 7207,

  /* The local engine's store. */
  TN_NO_HOME_FOLDER = 7301,
  TN_STORE_NOT_A_FILE = 7302,
  TN_STORE_NO_FOLDER = 7303,
  TN_STORE_NOT_READABLE = 7304,
  TN_STORE_NOT_WRITABLE = 7305,
  TN_STORE_DAMAGED = 7306,
  TN_STORE_FOREIGN = 7307,
  TN_STORE_NEWER = 7308,
  TN_STORE_BUSY = 7309,
  TN_STORE_FULL = 7310,
  TN_STORE_IO_ERROR = 7311,
  TN_STORE_PATH_UNUSABLE = 7312,
  TN_STORE_UNSYNCED = 7313, /* the change is made, but may not last */

  /* A database server reached over a network or a socket. */
  TN_SERVER_ADDRESS_INVALID = 7401,
  TN_SERVER_UNREACHABLE = 7402,
  TN_LOGIN_REFUSED = 7403,
  TN_NO_SUCH_DATABASE = 7404,
  TN_SERVER_NOT_READY = 7405,
  TN_TOO_MANY_CONNECTIONS = 7406,
  TN_TLS_REFUSED = 7407,
  TN_CONNECTION_LOST = 7408,
  TN_NOT_PERMITTED = 7409,
  TN_SERVER_ERROR = 7410,
  TN_SERVER_TOO_OLD = 7411,
  TN_VALUE_REFUSED = 7412,
  TN_SETTING_READ_ONLY = 7413,
  TN_RELOAD_NOT_PERMITTED = 7414,
  TN_CONFIGURATION_FILE_ERRORS = 7415,
  TN_EMPTY_LIST_REFUSED = 7416,
  TN_LIST_MALFORMED = 7417,
  TN_NO_SUITABLE_SERVER = 7418,
  TN_SERVER_CANNOT_WRITE = 7419,
  TN_SET_ON_COMMAND_LINE = 7420,
  TN_SET_BY_PATRONI = 7421,
  TN_ALTER_SYSTEM_OFF = 7422,
  TN_CONFIGURATION_LOCKED = 7423,
  TN_CHANGE_NOT_IN_FORCE = 7424,
  TN_CHANGES_NOT_LOADED = 7425,
  TN_CONNECTION_LOST_BEFORE = 7426, /* nothing was changed */

  /* A PostgreSQL cluster under Patroni. */
  TN_PATRONI_ADDRESS_INVALID = 7501,
  TN_PATRONI_UNREACHABLE = 7502,
  TN_PATRONI_TLS_REFUSED = 7503,
  TN_PATRONI_LOGIN_NEEDED = 7504,
  TN_PATRONI_LOGIN_REFUSED = 7505,
  TN_PATRONI_NOT_PERMITTED = 7506,
  TN_PATRONI_FOREIGN = 7507,
  TN_PATRONI_NO_LEADER = 7508,
  TN_PATRONI_STORE_DOWN = 7509,
  TN_PATRONI_CONFIG_NOT_READABLE = 7510,
  TN_PATRONI_CONFLICT = 7511,
  TN_PATRONI_OUTCOME_UNKNOWN = 7512,
  TN_PATRONI_NOT_FOLLOWED = 7513,
  TN_PATRONI_SETS_IT = 7514,
  TN_PATRONI_BELOW_MINIMUM = 7515,
  TN_PATRONI_WAL_LEVEL = 7516,
  TN_PATRONI_SYNCHRONOUS = 7517,
  TN_PATRONI_OVERRIDDEN = 7518,
  TN_PATRONI_SET_BY_MEMBER = 7519,
  TN_PATRONI_SOURCES_HIDDEN = 7520,
  TN_PATRONI_NOT_TAKEN = 7521,

  /* A registry: settings that many machines share in an etcd cluster. */
  TN_ETCD_ADDRESS_INVALID = 7601,
  TN_ETCD_TLS_REFUSED = 7602,
  TN_ETCD_LOGIN_REFUSED = 7603,
  TN_ETCD_LOGIN_NEEDED = 7604,
  TN_ETCD_CERTIFICATE_NAME = 7605,
  TN_ETCD_NOT_PERMITTED = 7606,
  TN_ETCD_NO_QUORUM = 7607,
  TN_ETCD_NO_ANSWER = 7608,
  TN_ETCD_OUTCOME_UNKNOWN = 7609,
  TN_ETCD_FULL = 7610,
  TN_ETCD_REQUEST_TOO_LARGE = 7611,
  TN_ETCD_ANSWER_TOO_LARGE = 7612,
  TN_ETCD_NO_GATEWAY = 7613,
  TN_ETCD_ERROR = 7614,
  TN_REGISTRY_DAMAGED = 7615,
  TN_REGISTRY_FOREIGN = 7616,
  TN_REGISTRY_NEWER = 7617,

  /* Registries: settings that a catalogue file describes. */
  TN_CATALOGUE_NOT_READABLE = 7701,
  TN_CATALOGUE_NOT_A_FILE = 7702, /* or one of more than 4 MiB */
  TN_CATALOGUE_NOT_TOML = 7703,
  TN_CATALOGUE_WRONG = 7704,
  TN_CATALOGUE_STORE_UNKNOWN = 7705,
  TN_VALUE_OUTSIDE_CATALOGUE = 7706 /* a kept one; also of the settings that are compiled in */
};

/* The settings for which the program announces a restart after a change, in ascending order: an
   engine gives these ids to the settings that take effect only when it is started again. */
static const int32_t TN_RESTART_SETTINGS[] = {
    26,  27,  44,  45,  48,  49,  57,  58,  61,  62,  64,  65,  66,  67,  68,  69,  73,  74,
    85,  86,  87,  99,  100, 103, 110, 111, 112, 114, 115, 117, 118, 120, 121, 122, 123, 124,
    125, 126, 127, 130, 132, 133, 134, 136, 137, 138, 140, 144, 145, 146, 147, 148, 149, 168,
    169, 170, 171, 172, 173, 174, 175, 177, 178, 179, 183, 201, 203, 204, 205, 210, 300, 301};

/* The one setting whose value the program lets be empty. */
enum { TN_EMPTY_VALUE_SETTING = 74 };

typedef struct TnCategoryRecord {
  char name[TN_NAME_SIZE];
  int32_t extraInfo; /* how many of the category's settings differ from their default */
  char reserved[20];
} TnCategoryRecord;

typedef struct TnSettingRecord {
  TnValueType type;
  char name[TN_NAME_SIZE];
  int32_t extraInfo;     /* 0; kept for engines that have something to tell */
  uint16_t clientServer; /* 0: a client setting, otherwise a server setting */
  char reserved[6];
} TnSettingRecord;

#ifdef __cplusplus
#define TN_STATIC_ASSERT static_assert
#else
#define TN_STATIC_ASSERT _Static_assert
#endif
TN_STATIC_ASSERT(sizeof(TnCategoryRecord) == 280, "callers provide 280 bytes");
TN_STATIC_ASSERT(offsetof(TnCategoryRecord, extraInfo) == 256, "record layout");
TN_STATIC_ASSERT(sizeof(TnSettingRecord) == 272, "callers provide 272 bytes");
TN_STATIC_ASSERT(offsetof(TnSettingRecord, name) == 4, "record layout");
TN_STATIC_ASSERT(offsetof(TnSettingRecord, extraInfo) == 260, "record layout");
TN_STATIC_ASSERT(offsetof(TnSettingRecord, clientServer) == 264, "record layout");
#undef TN_STATIC_ASSERT

/* The functions are seen outside a library that hides its names by default. */
#if defined(__GNUC__)
#pragma GCC visibility push(default)
#endif

/* TnStart comes before everything else, TnStop after it: it disconnects what is still connected.
   0, or the first status that disconnecting gave. */
int TnStart(int reserved);
int TnStop(int reserved);

/* Opens the engine that the server name stands for. No argument may be null; user and password may
   be empty. On success the handle is the caller's to pass to TnDisconnect. */
TnStatus TnConnectServer(const char* server, const char* user, const char* password,
                         TnHandle* handle);
/* Closes the connection, also when it fails: the status then tells what the engine could not do on
   being left. */
TnStatus TnDisconnect(TnHandle handle);

TnStatus TnGetCategoryListCount(TnHandle handle, int* count);
TnStatus TnGetCategoryList(TnHandle handle, int* count, int* categoryIds);
TnStatus TnGetCategoryInfo(TnHandle handle, int categoryId, TnCategoryRecord* record);
TnStatus TnGetSettingList(TnHandle handle, int categoryId, int* count, int* settingIds);
TnStatus TnGetSettingInfo(TnHandle handle, int settingId, TnSettingRecord* record);
/* Non-zero: the setting exists and is available on this engine. Not a status. */
int16_t TnIsSettingAvailable(TnHandle handle, int settingId);

TnStatus TnGetStringValue(TnHandle handle, int settingId, int* size, char* value,
                          TnValueSelector selector);
TnStatus TnGetLongValue(TnHandle handle, int settingId, int32_t* value, TnValueSelector selector);
/* Non-zero value: true. */
TnStatus TnGetBooleanValue(TnHandle handle, int settingId, int16_t* value,
                           TnValueSelector selector);
TnStatus TnGetBooleanStrings(TnHandle handle, int settingId, int* trueSize, char* trueWord,
                             int* falseSize, char* falseWord);
TnStatus TnGetSelectionValue(TnHandle handle, int settingId, int* count, int32_t* items,
                             TnValueSelector selector);
TnStatus TnCountSelectionItems(TnHandle handle, int settingId, int* count);
TnStatus TnGetAllPossibleSelections(TnHandle handle, int settingId, int* count, int32_t* items);
TnStatus TnGetSelectionString(TnHandle handle, int settingId, int32_t item, int* size, char* text);
/* The maximum comes first; it may be one of the symbolic maxima. */
TnStatus TnGetValueLimit(TnHandle handle, int settingId, int32_t* maximum, int32_t* minimum);
/* Takes no handle: it asks the engine that was opened last and is still open, or the local engine
   when there is none. */
TnStatus TnGetSettingHelp(int settingId, int* size, char* text);

/* The engine checks the value; when the call returns TN_SUCCESS the change is durable. */
TnStatus TnSetStringValue(TnHandle handle, int settingId, const char* value,
                          TnValueSelector selector);
TnStatus TnSetLongValue(TnHandle handle, int settingId, int64_t value, TnValueSelector selector);
TnStatus TnSetBooleanValue(TnHandle handle, int settingId, int value, TnValueSelector selector);
TnStatus TnSetSelectionValue(TnHandle handle, int settingId, int count, const int32_t* items,
                             TnValueSelector selector);

#if defined(__GNUC__)
#pragma GCC visibility pop
#endif

#ifdef __cplusplus
}
#endif

#endif
