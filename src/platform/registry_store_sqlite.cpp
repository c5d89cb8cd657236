// registry_store_sqlite.cpp - the platform's registry as a SQLite database: one file for the
// machine hives, one for the user's, five separate trees (registry_store.h, docs/registry.md).
//
// SQLite is the same on every platform, so this body is portable platform code: it calls no
// operating-system header, and only registry_location.h knows where the files are. A platform with
// a registry of its own would compile its own registry_store body instead of this one.
//
// Names: a key path is split at backslashes, empty components dropped, and folded with full
// Unicode case folding, the same in every process and locale. Each key row carries its folded full
// path, unique per tree, so any key resolves in one indexed lookup. Text is stored as UTF-8, a lone
// surrogate encoded as its own three bytes so that every 16-bit name survives the trip.
//
// Connections: one per file and process, used under the file's mutex. WAL journal, synchronous
// FULL (a commit reaches the disk before it is reported), BEGIN IMMEDIATE for every write, and a
// busy handler that never gives up, so a store busy with other processes makes a caller wait, not
// fail. A forked child leaves its parent's connection alone and opens its own.
#include <sqlite3.h>
#include <unicode/uchar.h>
#include <unicode/ustring.h>

#include <chrono>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "platform/native_error.h"
#include "platform/process_info.h"
#include "platform/registry_location.h"
#include "platform/registry_store.h"
#include "platform/utf8.h"

namespace qz::os {
namespace {

constexpr int kSchemaVersion = 1;  // PRAGMA user_version of a file this code writes
constexpr int kTreeUser = 2;

// The schema; docs/registry.md explains it for whoever repairs a file with the sqlite3 shell.
constexpr const char* kSchema =
    "CREATE TABLE IF NOT EXISTS keys("
    " id INTEGER PRIMARY KEY,"
    " tree INTEGER NOT NULL,"
    " parent INTEGER REFERENCES keys(id),"
    " name TEXT NOT NULL,"
    " path TEXT NOT NULL,"
    " UNIQUE(tree, path));"
    "CREATE INDEX IF NOT EXISTS keys_children ON keys(parent, path);"
    "CREATE TABLE IF NOT EXISTS vals("
    " id INTEGER PRIMARY KEY,"
    " key INTEGER NOT NULL REFERENCES keys(id),"
    " name TEXT NOT NULL,"
    " folded TEXT NOT NULL,"
    " type INTEGER NOT NULL,"
    " data BLOB NOT NULL,"
    " UNIQUE(key, folded));"
    "CREATE INDEX IF NOT EXISTS vals_order ON vals(key, id);";

enum Stmt : unsigned {
  kFindKey,
  kInsertKey,
  kQueryValue,
  kUpsertValue,
  kDeleteValue,
  kHasChild,
  kDeleteKeyValues,
  kDeleteKey,
  kChildAt,
  kChildAfter,
  kValueAt,
  kValueAfter,
  kDataVersion,
  kBegin,
  kCommit,
  kRollback,
  kStmtCount
};

constexpr const char* kStatements[kStmtCount] = {
    "SELECT id FROM keys WHERE tree=?1 AND path=?2",
    "INSERT INTO keys(tree, parent, name, path) VALUES(?1, ?2, ?3, ?4)",
    "SELECT type, data FROM vals WHERE key=?1 AND folded=?2",
    ("INSERT INTO vals(key, name, folded, type, data) VALUES(?1, ?2, ?3, ?4, ?5)"
     " ON CONFLICT(key, folded) DO UPDATE SET type=excluded.type, data=excluded.data"),
    "DELETE FROM vals WHERE key=?1 AND folded=?2",
    "SELECT 1 FROM keys WHERE parent=?1 LIMIT 1",
    "DELETE FROM vals WHERE key=?1",
    "DELETE FROM keys WHERE id=?1",
    "SELECT name, path FROM keys WHERE parent=?1 ORDER BY path LIMIT 64 OFFSET ?2",
    "SELECT name, path FROM keys WHERE parent=?1 AND path>?2 ORDER BY path LIMIT 64",
    "SELECT id, name, type, data FROM vals WHERE key=?1 ORDER BY id LIMIT 1 OFFSET ?2",
    "SELECT id, name, type, data FROM vals WHERE key=?1 AND id>?2 ORDER BY id LIMIT 1",
    "PRAGMA data_version",
    "BEGIN IMMEDIATE",
    "COMMIT",
    "ROLLBACK",
};

// --- Text --------------------------------------------------------------------------------------

// 16-bit text to UTF-8, with a lone surrogate written as its own three bytes.
void AppendStoreText(std::string& out, std::u16string_view text) {
  out += Utf16ToUtf8KeepingSurrogates(text);
}

// The way back. Bytes that no writer of this store produces (a file edited by hand) become U+FFFD.
std::u16string StoreTextToUtf16(const unsigned char* s, size_t n) {
  return Utf8ToUtf16KeepingSurrogates(std::string_view(reinterpret_cast<const char*>(s), n));
}

// Full case folding, independent of the locale. Unpaired surrogates pass unchanged.
std::u16string Fold(std::u16string_view text) {
  if (text.empty()) return {};
  std::u16string out(text.size() * 3, u'\0');
  UErrorCode error = U_ZERO_ERROR;
  int32_t n = u_strFoldCase(out.data(), static_cast<int32_t>(out.size()), text.data(),
                            static_cast<int32_t>(text.size()), U_FOLD_CASE_DEFAULT, &error);
  if (error == U_BUFFER_OVERFLOW_ERROR) {
    out.assign(static_cast<size_t>(n), u'\0');
    error = U_ZERO_ERROR;
    n = u_strFoldCase(out.data(), n, text.data(), static_cast<int32_t>(text.size()), U_FOLD_CASE_DEFAULT, &error);
  }
  if (U_FAILURE(error)) throw std::bad_alloc();
  out.resize(static_cast<size_t>(n));
  return out;
}

std::u16string_view View(const char16_t* text) {
  if (text == nullptr) return {};
  size_t n = 0;
  while (text[n] != 0) ++n;
  return {text, n};
}

// A key path split into its components, empty ones dropped. 87 when one is too long.
uint32_t SplitPath(std::u16string_view path, std::vector<std::u16string_view>* parts) {
  size_t start = 0;
  while (start <= path.size()) {
    size_t end = path.find(u'\\', start);
    if (end == std::u16string_view::npos) end = path.size();
    if (end > start) {
      if (end - start > kRegMaxKeyName) return kErrorInvalidParameter;
      parts->push_back(path.substr(start, end - start));
    }
    start = end + 1;
  }
  return kErrorSuccess;
}

// "base\part\part" in the store's folded form.
std::string JoinFolded(const std::string& base, const std::vector<std::u16string_view>& parts) {
  std::string out = base;
  for (const auto& part : parts) {
    if (!out.empty()) out += '\\';
    AppendStoreText(out, Fold(part));
  }
  return out;
}

// --- Errors ------------------------------------------------------------------------------------

uint32_t ErrorFromSqlite(int rc) {
  switch (rc & 0xFF) {
    case SQLITE_OK:
    case SQLITE_ROW:
    case SQLITE_DONE: return kErrorSuccess;
    case SQLITE_NOMEM: return kErrorOutOfMemory;
    case SQLITE_READONLY:
    case SQLITE_PERM:
    case SQLITE_AUTH: return kErrorAccessDenied;
    case SQLITE_BUSY:
    case SQLITE_LOCKED: return kErrorBusy;
    case SQLITE_FULL: return kErrorDiskFull;
    case SQLITE_TOOBIG: return kErrorInvalidParameter;
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
    case SQLITE_SCHEMA:
    case SQLITE_ERROR: return kErrorBadDb;  // a missing table or column: not a file of ours
    default: return kErrorRegistryIoFailed;
  }
}

bool IsBusy(int rc) { return (rc & 0xFF) == SQLITE_BUSY || (rc & 0xFF) == SQLITE_LOCKED; }

void Backoff(int attempt) {
  const int ms = attempt < 4 ? 1 : attempt < 10 ? 5 : 20;
  std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

// Never gives up: a store busy with other processes makes the caller wait.
int BusyHandler(void*, int attempt) {
  Backoff(attempt);
  return 1;
}

// --- One database file -------------------------------------------------------------------------

class CStoreFile {
 public:
  CStoreFile(std::string path, bool machine) : m_path(std::move(path)), m_machine(machine) {}
  ~CStoreFile() { Disconnect(); }
  CStoreFile(const CStoreFile&) = delete;
  CStoreFile& operator=(const CStoreFile&) = delete;

  std::mutex m_lock;  // leaf lock: guards everything below; held across each operation

  // Makes sure the connection is open (m_lock held): 0 or a platform error.
  uint32_t Connect();
  bool ReadOnly() const { return m_readOnly; }

  // A prepared statement, reset and with its bindings cleared (m_lock held, connected).
  sqlite3_stmt* Statement(Stmt id);

  // Steps `stmt`, waiting out a busy store. The SQLite result.
  int Step(sqlite3_stmt* stmt);

  // Runs `body` in one write transaction (m_lock held, connected), again from the start when the
  // store was busy. The body's error rolls the transaction back.
  template <class Body>
  uint32_t Write(Body&& body);

  // A number that changes whenever any process has committed to the file since the last call.
  uint64_t Version();

  const std::string& Path() const { return m_path; }

 private:
  uint32_t Open();
  uint32_t OpenStandIn();
  uint32_t Prepare();
  void Disconnect();

  std::string m_path;               // the file
  bool m_machine;                   // machine hives (may be read-only) or the user's
  sqlite3* m_db = nullptr;          // the connection, or null
  bool m_readOnly = false;          // writes are refused with access denied
  uint32_t m_pid = 0;               // the process that opened m_db
  uint64_t m_localCommits = 0;      // commits made through this connection
  sqlite3_stmt* m_stmts[kStmtCount] = {};  // prepared once per connection
};

uint32_t CStoreFile::Connect() {
  if (m_db != nullptr && m_pid == GetCurrentProcessId()) return kErrorSuccess;
  if (m_db != nullptr) {
    // A forked child: the parent's connection and its locks belong to the parent. It is dropped
    // without closing, since a close here could checkpoint or unlink under the parent's feet.
    // It stays reachable, so that leak checkers of the child do not report it.
    static std::vector<sqlite3*>* s_abandoned = new std::vector<sqlite3*>;
    s_abandoned->push_back(m_db);
    m_db = nullptr;
    for (auto& stmt : m_stmts) stmt = nullptr;
  }
  const uint32_t error = Open();
  if (error != kErrorSuccess) Disconnect();
  return error;
}

uint32_t CStoreFile::Open() {
  m_pid = GetCurrentProcessId();
  m_readOnly = false;
  if (m_path.empty()) return OpenStandIn();
  MakeRegistryDirectory(m_path, !m_machine);
  bool writable = MayWriteRegistryFile(m_path);
  int flags = SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_PRIVATECACHE;
  flags |= writable ? (SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE) : SQLITE_OPEN_READONLY;
  int rc = sqlite3_open_v2(m_path.c_str(), &m_db, flags, nullptr);
  if (rc == SQLITE_CANTOPEN && !writable) return OpenStandIn();  // no file: an empty store
  if (rc != SQLITE_OK) return rc == SQLITE_CANTOPEN ? kErrorAccessDenied : ErrorFromSqlite(rc);
  m_readOnly = !writable;
  sqlite3_extended_result_codes(m_db, 1);
  sqlite3_busy_handler(m_db, BusyHandler, nullptr);

  // What the file holds: ours (version 1), new and empty (0), or something else.
  int version = -1;
  sqlite3_stmt* stmt = nullptr;
  rc = sqlite3_prepare_v2(m_db, "PRAGMA user_version", -1, &stmt, nullptr);
  if (rc == SQLITE_OK) {
    while (IsBusy(rc = sqlite3_step(stmt))) {
      sqlite3_reset(stmt);
      Backoff(5);
    }
    if (rc == SQLITE_ROW) version = sqlite3_column_int(stmt, 0);
  }
  sqlite3_finalize(stmt);
  if (version < 0) return ErrorFromSqlite(rc);
  if (version > kSchemaVersion) return kErrorBadDb;
  if (version == 0 && m_readOnly) {
    sqlite3_close(m_db);
    m_db = nullptr;
    return OpenStandIn();
  }

  if (!m_readOnly) {
    // journal_mode is kept in the file; the others belong to this connection. The WAL and its
    // index stay on disk after the last close, so a reader without write access can still open.
    sqlite3_exec(m_db, "PRAGMA journal_mode=WAL", nullptr, nullptr, nullptr);
    int persist = 1;
    sqlite3_file_control(m_db, "main", SQLITE_FCNTL_PERSIST_WAL, &persist);
  }
  rc = sqlite3_exec(m_db, "PRAGMA synchronous=FULL; PRAGMA foreign_keys=ON", nullptr, nullptr, nullptr);
  if (rc != SQLITE_OK) return ErrorFromSqlite(rc);
  if (version == 0) {
    std::string sql = "BEGIN IMMEDIATE;";
    sql += kSchema;
    for (int tree = 0; tree < 5; ++tree) {
      if ((tree == kTreeUser) == m_machine) continue;
      sql += "INSERT INTO keys(tree, parent, name, path) SELECT " + std::to_string(tree) +
             ", NULL, '', '' WHERE NOT EXISTS (SELECT 1 FROM keys WHERE tree=" + std::to_string(tree) +
             " AND path='');";
    }
    sql += "PRAGMA user_version=" + std::to_string(kSchemaVersion) + ";COMMIT;";
    while (IsBusy(rc = sqlite3_exec(m_db, sql.c_str(), nullptr, nullptr, nullptr))) {
      sqlite3_exec(m_db, "ROLLBACK", nullptr, nullptr, nullptr);
      Backoff(5);
    }
    if (rc != SQLITE_OK) {
      sqlite3_exec(m_db, "ROLLBACK", nullptr, nullptr, nullptr);
      return ErrorFromSqlite(rc);
    }
  }
  return Prepare();
}

// An empty, read-only store in memory: what a process sees where no file exists and none may be
// made (the machine hives of an ordinary user on a fresh system).
uint32_t CStoreFile::OpenStandIn() {
  int rc = sqlite3_open_v2(":memory:", &m_db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
  if (rc != SQLITE_OK) return ErrorFromSqlite(rc);
  std::string sql = kSchema;
  for (int tree = 0; tree < 5; ++tree) {
    sql += "INSERT INTO keys(tree, parent, name, path) VALUES(" + std::to_string(tree) + ", NULL, '', '');";
  }
  rc = sqlite3_exec(m_db, sql.c_str(), nullptr, nullptr, nullptr);
  if (rc != SQLITE_OK) return ErrorFromSqlite(rc);
  m_readOnly = true;
  return Prepare();
}

uint32_t CStoreFile::Prepare() {
  for (unsigned i = 0; i < kStmtCount; ++i) {
    const int rc = sqlite3_prepare_v3(m_db, kStatements[i], -1, SQLITE_PREPARE_PERSISTENT, &m_stmts[i], nullptr);
    if (rc != SQLITE_OK) return ErrorFromSqlite(rc);
  }
  return kErrorSuccess;
}

void CStoreFile::Disconnect() {
  if (m_db == nullptr) return;
  if (m_pid == GetCurrentProcessId()) {
    for (auto& stmt : m_stmts) sqlite3_finalize(stmt);
    sqlite3_close(m_db);
  }
  for (auto& stmt : m_stmts) stmt = nullptr;
  m_db = nullptr;
}

sqlite3_stmt* CStoreFile::Statement(Stmt id) {
  sqlite3_stmt* stmt = m_stmts[id];
  sqlite3_reset(stmt);
  sqlite3_clear_bindings(stmt);
  return stmt;
}

int CStoreFile::Step(sqlite3_stmt* stmt) {
  int rc;
  for (int attempt = 0; IsBusy(rc = sqlite3_step(stmt)); ++attempt) {
    sqlite3_reset(stmt);
    Backoff(attempt);
  }
  return rc;
}

template <class Body>
uint32_t CStoreFile::Write(Body&& body) {
  if (m_readOnly) return kErrorAccessDenied;
  for (int attempt = 0;; ++attempt) {
    int rc = Step(Statement(kBegin));
    if (rc != SQLITE_DONE) return ErrorFromSqlite(rc);
    int busy = SQLITE_OK;
    const uint32_t error = body(&busy);
    if (error == kErrorSuccess && busy == SQLITE_OK) {
      rc = sqlite3_step(Statement(kCommit));
      if (rc == SQLITE_DONE) {
        ++m_localCommits;
        return kErrorSuccess;
      }
      busy = IsBusy(rc) ? rc : SQLITE_OK;
      if (!busy) {
        sqlite3_step(Statement(kRollback));
        return ErrorFromSqlite(rc);
      }
    }
    sqlite3_step(Statement(kRollback));
    if (busy == SQLITE_OK) return error;
    Backoff(attempt);
  }
}

uint64_t CStoreFile::Version() {
  sqlite3_stmt* stmt = Statement(kDataVersion);
  const uint64_t other = Step(stmt) == SQLITE_ROW ? static_cast<uint64_t>(sqlite3_column_int64(stmt, 0)) : 0;
  sqlite3_reset(stmt);
  return (other << 32) ^ m_localCommits;
}

// A statement step inside a Write body: a busy answer is handed to the transaction to start over.
int StepInWrite(sqlite3_stmt* stmt, int* busy) {
  const int rc = sqlite3_step(stmt);
  if (IsBusy(rc)) *busy = rc;
  return rc;
}

// --- The two files of this process ---------------------------------------------------------------

class CStores {
 public:
  std::shared_ptr<CStoreFile> For(bool machine) {
    RegistryFiles files = GetRegistryFiles();
    std::lock_guard<std::mutex> hold(m_lock);
    auto& slot = machine ? m_machine : m_user;
    const std::string& path = machine ? files.machine : files.user;
    if (slot == nullptr || slot->Path() != path) slot = std::make_shared<CStoreFile>(path, machine);
    return slot;
  }

 private:
  std::mutex m_lock;                      // leaf lock over the two slots
  std::shared_ptr<CStoreFile> m_machine;  // the machine hives' file
  std::shared_ptr<CStoreFile> m_user;     // the user's file
};

CStores& Stores() {
  static CStores* s_stores = new CStores;  // lives to the end of the process: keys may outlive any order of teardown
  return *s_stores;
}

// --- Open keys ---------------------------------------------------------------------------------

struct CEnumCursor {
  bool valid = false;      // the fields below describe the last answer
  uint32_t index = 0;      // index of the last answer
  uint64_t version = 0;    // the file's version when it was given
  std::string lastPath;    // subkeys: folded path of the last answer
  int64_t lastId = 0;      // values: row of the last answer
  std::vector<std::pair<std::string, std::string>> batch;  // subkeys: names and paths read ahead
  size_t next = 0;         // the next of `batch` to give
};

struct COpenKey {
  std::shared_ptr<CStoreFile> file;  // the file of the key's tree
  int tree = 0;                      // 0..4, the hive numbers
  int64_t id = 0;                    // row in keys
  std::string path;                  // folded full path, "" for a root
  bool mayWrite = false;             // opened with write access on a writable file
  CEnumCursor keys;                  // where RegEnumKeyEx stopped
  CEnumCursor values;                // where RegEnumValue stopped
};

bool IsPredefined(RegKey key) { return key >= kRegClassesRoot && key <= kRegLocalMachine; }

// The tree a predefined root and view name; -1 for anything else.
int TreeOf(RegKey root, uint32_t access) {
  const bool view32 = (access & kKeyWow64_32Key) != 0;
  switch (root) {
    case kRegClassesRoot: return view32 ? 0 : 3;
    case kRegLocalMachine: return view32 ? 1 : 4;
    case kRegCurrentUser: return kTreeUser;
    default: return -1;
  }
}

constexpr uint32_t kWriteAccess = kKeySetValue | kKeyCreateSubKey | 0x0020 | 0x00010000 | 0x00040000 | 0x00080000;

// What a key handle stands on: its file, tree and folded path.
struct CBase {
  std::shared_ptr<CStoreFile> file;
  int tree = -1;
  std::string path;
};

uint32_t BaseOf(RegKey key, uint32_t access, CBase* base) {
  if (key == 0 || key == kRegInvalidRoot) return kErrorInvalidHandle;
  if (IsPredefined(key)) {
    base->tree = TreeOf(key, access);
    if (base->tree < 0) return kErrorInvalidHandle;
    base->file = Stores().For(base->tree != kTreeUser);
    return kErrorSuccess;
  }
  if (key >= kRegClassesRoot && key < kRegClassesRoot + 0x100) return kErrorInvalidHandle;
  const auto* open = reinterpret_cast<const COpenKey*>(key);
  base->file = open->file;
  base->tree = open->tree;
  base->path = open->path;
  return kErrorSuccess;
}

int64_t FindKey(CStoreFile& file, int tree, const std::string& path, int* rc) {
  sqlite3_stmt* stmt = file.Statement(kFindKey);
  sqlite3_bind_int(stmt, 1, tree);
  sqlite3_bind_text(stmt, 2, path.data(), static_cast<int>(path.size()), SQLITE_STATIC);
  *rc = file.Step(stmt);
  const int64_t id = *rc == SQLITE_ROW ? sqlite3_column_int64(stmt, 0) : 0;
  sqlite3_reset(stmt);
  return id;
}

uint32_t MakeOpenKey(const CBase& base, int64_t id, std::string path, uint32_t access, RegKey* out) {
  auto* key = new COpenKey;
  key->file = base.file;
  key->tree = base.tree;
  key->id = id;
  key->path = std::move(path);
  key->mayWrite = (access & kWriteAccess) != 0;
  *out = reinterpret_cast<RegKey>(key);
  return kErrorSuccess;
}

uint32_t OpenOrCreate(RegKey root, const char16_t* subKey, uint32_t access, RegKey* out, bool create) {
  CBase base;
  uint32_t error = BaseOf(root, access, &base);
  if (error != kErrorSuccess) return error;
  std::vector<std::u16string_view> parts;
  error = SplitPath(View(subKey), &parts);
  if (error != kErrorSuccess) return error;
  const std::string path = JoinFolded(base.path, parts);

  CStoreFile& file = *base.file;
  std::lock_guard<std::mutex> hold(file.m_lock);
  error = file.Connect();
  if (error != kErrorSuccess) return error;
  int rc;
  int64_t id = FindKey(file, base.tree, path, &rc);
  if (rc != SQLITE_ROW && rc != SQLITE_DONE) return ErrorFromSqlite(rc);
  // A missing key is missing whatever access was asked; only a key that is there is refused.
  if (id == 0 && !create) return kErrorFileNotFound;
  if (file.ReadOnly() && (create || (access & kWriteAccess) != 0)) return kErrorAccessDenied;
  if (id == 0) {
    error = file.Write([&](int* busy) -> uint32_t {
      // Walk down from the root, making each missing level under its parent.
      int stepRc;
      int64_t parent = FindKey(file, base.tree, base.path, &stepRc);
      if (IsBusy(stepRc)) *busy = stepRc;
      if (parent == 0) {
        if (stepRc != SQLITE_DONE) return ErrorFromSqlite(stepRc);
        if (!base.path.empty()) return kErrorKeyDeleted;  // the handle's own key went away
        sqlite3_stmt* insert = file.Statement(kInsertKey);  // a root lost to a hand repair
        sqlite3_bind_int(insert, 1, base.tree);
        sqlite3_bind_null(insert, 2);
        sqlite3_bind_text(insert, 3, "", 0, SQLITE_STATIC);
        sqlite3_bind_text(insert, 4, "", 0, SQLITE_STATIC);
        stepRc = StepInWrite(insert, busy);
        if (stepRc != SQLITE_DONE) return ErrorFromSqlite(stepRc);
        parent = sqlite3_last_insert_rowid(sqlite3_db_handle(insert));
      }
      std::string level = base.path;
      for (const auto& part : parts) {
        if (!level.empty()) level += '\\';
        AppendStoreText(level, Fold(part));
        int64_t child = FindKey(file, base.tree, level, &stepRc);
        if (IsBusy(stepRc)) *busy = stepRc;
        if (child == 0) {
          if (stepRc != SQLITE_DONE) return ErrorFromSqlite(stepRc);
          std::string name;
          AppendStoreText(name, part);
          sqlite3_stmt* insert = file.Statement(kInsertKey);
          sqlite3_bind_int(insert, 1, base.tree);
          sqlite3_bind_int64(insert, 2, parent);
          sqlite3_bind_text(insert, 3, name.data(), static_cast<int>(name.size()), SQLITE_STATIC);
          sqlite3_bind_text(insert, 4, level.data(), static_cast<int>(level.size()), SQLITE_STATIC);
          stepRc = StepInWrite(insert, busy);
          if (stepRc != SQLITE_DONE) return ErrorFromSqlite(stepRc);
          child = sqlite3_last_insert_rowid(sqlite3_db_handle(insert));
        }
        parent = child;
      }
      id = parent;
      return kErrorSuccess;
    });
    if (error != kErrorSuccess) return error;
  }
  return MakeOpenKey(base, id, path, access, out);
}

// The open key behind a handle, for the value and enumeration operations; null for a bad handle.
// A predefined root is opened for the call (its *temp holds it).
COpenKey* KeyOf(RegKey key, std::unique_ptr<COpenKey>* temp, uint32_t* error) {
  if (key == 0 || key == kRegInvalidRoot) {
    *error = kErrorInvalidHandle;
    return nullptr;
  }
  if (!IsPredefined(key)) {
    if (key >= kRegClassesRoot && key < kRegClassesRoot + 0x100) {
      *error = kErrorInvalidHandle;
      return nullptr;
    }
    return reinterpret_cast<COpenKey*>(key);
  }
  RegKey opened = 0;
  *error = OpenOrCreate(key, nullptr, kKeyAllAccess, &opened, false);
  if (*error == kErrorAccessDenied) *error = OpenOrCreate(key, nullptr, kKeyRead, &opened, false);
  if (*error != kErrorSuccess) return nullptr;
  temp->reset(reinterpret_cast<COpenKey*>(opened));
  return temp->get();
}

std::string ValueName(const char16_t* name, uint32_t* error) {
  const std::u16string_view view = View(name);
  if (view.size() > kRegMaxValueName) {
    *error = kErrorInvalidParameter;
    return {};
  }
  std::string folded;
  AppendStoreText(folded, Fold(view));
  *error = kErrorSuccess;
  return folded;
}

// Copies `n` bytes of a result column into the caller's buffer by the registry's size rules.
uint32_t DeliverData(const void* bytes, uint32_t n, void* data, uint32_t* size) {
  if (data == nullptr) {
    if (size != nullptr) *size = n;
    return kErrorSuccess;
  }
  if (size == nullptr) return kErrorInvalidParameter;
  const uint32_t room = *size;
  *size = n;
  if (room < n) return kErrorMoreData;
  if (n > 0) std::memcpy(data, bytes, n);
  return kErrorSuccess;
}

// Copies a name (store text) into a 16-bit buffer of *length units by the enumeration's rules.
uint32_t DeliverName(const unsigned char* text, int bytes, char16_t* name, uint32_t* length) {
  const std::u16string decoded = StoreTextToUtf16(text, static_cast<size_t>(bytes));
  const uint32_t room = *length;
  *length = static_cast<uint32_t>(decoded.size());
  if (name == nullptr || room <= decoded.size()) return kErrorMoreData;
  std::memcpy(name, decoded.data(), decoded.size() * sizeof(char16_t));
  name[decoded.size()] = 0;
  return kErrorSuccess;
}

template <class Fn>
uint32_t Guarded(Fn&& fn) noexcept {
  try {
    return fn();
  } catch (const std::bad_alloc&) {
    return kErrorOutOfMemory;
  }
}

}  // namespace

// --- The operations ------------------------------------------------------------------------------

uint32_t RegOpenKeyEx(RegKey root, const char16_t* subKey, uint32_t access, RegKey* out) noexcept {
  return Guarded([&] { return OpenOrCreate(root, subKey, access, out, false); });
}

uint32_t RegCreateKeyEx(RegKey root, const char16_t* subKey, uint32_t access, RegKey* out) noexcept {
  return Guarded([&] { return OpenOrCreate(root, subKey, access, out, true); });
}

uint32_t RegCloseKey(RegKey key) noexcept {
  if (key == 0 || key == kRegInvalidRoot) return kErrorInvalidHandle;
  if (key >= kRegClassesRoot && key < kRegClassesRoot + 0x100) return IsPredefined(key) ? kErrorSuccess : kErrorInvalidHandle;
  delete reinterpret_cast<COpenKey*>(key);
  return kErrorSuccess;
}

uint32_t RegQueryValueEx(RegKey key, const char16_t* name, uint32_t* type, void* data, uint32_t* size) noexcept {
  return Guarded([&]() -> uint32_t {
    std::unique_ptr<COpenKey> temp;
    uint32_t error;
    COpenKey* open = KeyOf(key, &temp, &error);
    if (open == nullptr) return error;
    const std::string folded = ValueName(name, &error);
    if (error != kErrorSuccess) return error;
    CStoreFile& file = *open->file;
    std::lock_guard<std::mutex> hold(file.m_lock);
    error = file.Connect();
    if (error != kErrorSuccess) return error;
    sqlite3_stmt* stmt = file.Statement(kQueryValue);
    sqlite3_bind_int64(stmt, 1, open->id);
    sqlite3_bind_text(stmt, 2, folded.data(), static_cast<int>(folded.size()), SQLITE_STATIC);
    const int rc = file.Step(stmt);
    if (rc != SQLITE_ROW) {
      sqlite3_reset(stmt);
      return rc == SQLITE_DONE ? kErrorFileNotFound : ErrorFromSqlite(rc);
    }
    if (type != nullptr) *type = static_cast<uint32_t>(sqlite3_column_int64(stmt, 0));
    const void* bytes = sqlite3_column_blob(stmt, 1);
    const auto n = static_cast<uint32_t>(sqlite3_column_bytes(stmt, 1));
    error = DeliverData(bytes, n, data, size);
    sqlite3_reset(stmt);
    return error;
  });
}

uint32_t RegSetValueEx(RegKey key, const char16_t* name, uint32_t type, const void* data, uint32_t size) noexcept {
  return Guarded([&]() -> uint32_t {
    std::unique_ptr<COpenKey> temp;
    uint32_t error;
    COpenKey* open = KeyOf(key, &temp, &error);
    if (open == nullptr) return error;
    if (data == nullptr && size != 0) return kErrorNoaccess;
    if (size > 0x7FFFFFFFu) return kErrorInvalidParameter;  // beyond what one row can hold
    if (!open->mayWrite) return kErrorAccessDenied;
    const std::string folded = ValueName(name, &error);
    if (error != kErrorSuccess) return error;
    std::string spelled;
    AppendStoreText(spelled, View(name));
    CStoreFile& file = *open->file;
    std::lock_guard<std::mutex> hold(file.m_lock);
    error = file.Connect();
    if (error != kErrorSuccess) return error;
    return file.Write([&](int* busy) -> uint32_t {
      sqlite3_stmt* stmt = file.Statement(kUpsertValue);
      sqlite3_bind_int64(stmt, 1, open->id);
      sqlite3_bind_text(stmt, 2, spelled.data(), static_cast<int>(spelled.size()), SQLITE_STATIC);
      sqlite3_bind_text(stmt, 3, folded.data(), static_cast<int>(folded.size()), SQLITE_STATIC);
      sqlite3_bind_int64(stmt, 4, type);
      sqlite3_bind_blob(stmt, 5, size != 0 ? data : "", static_cast<int>(size), SQLITE_STATIC);
      const int rc = StepInWrite(stmt, busy);
      sqlite3_reset(stmt);
      if (rc == SQLITE_CONSTRAINT_FOREIGNKEY) return kErrorKeyDeleted;
      return rc == SQLITE_DONE ? kErrorSuccess : ErrorFromSqlite(rc);
    });
  });
}

uint32_t RegDeleteValue(RegKey key, const char16_t* name) noexcept {
  return Guarded([&]() -> uint32_t {
    std::unique_ptr<COpenKey> temp;
    uint32_t error;
    COpenKey* open = KeyOf(key, &temp, &error);
    if (open == nullptr) return error;
    if (!open->mayWrite) return kErrorAccessDenied;
    const std::string folded = ValueName(name, &error);
    if (error != kErrorSuccess) return error;
    CStoreFile& file = *open->file;
    std::lock_guard<std::mutex> hold(file.m_lock);
    error = file.Connect();
    if (error != kErrorSuccess) return error;
    return file.Write([&](int* busy) -> uint32_t {
      sqlite3_stmt* stmt = file.Statement(kDeleteValue);
      sqlite3_bind_int64(stmt, 1, open->id);
      sqlite3_bind_text(stmt, 2, folded.data(), static_cast<int>(folded.size()), SQLITE_STATIC);
      const int rc = StepInWrite(stmt, busy);
      sqlite3_reset(stmt);
      if (rc != SQLITE_DONE) return ErrorFromSqlite(rc);
      return sqlite3_changes(sqlite3_db_handle(stmt)) == 0 ? kErrorFileNotFound : kErrorSuccess;
    });
  });
}

uint32_t RegDeleteKeyEx(RegKey key, const char16_t* subKey, uint32_t view) noexcept {
  return Guarded([&]() -> uint32_t {
    CBase base;
    uint32_t error = BaseOf(key, view, &base);
    if (error != kErrorSuccess) return error;
    std::vector<std::u16string_view> parts;
    error = SplitPath(View(subKey), &parts);
    if (error != kErrorSuccess) return error;
    const std::string path = JoinFolded(base.path, parts);
    if (path.empty()) return kErrorAccessDenied;  // a root is not removed
    CStoreFile& file = *base.file;
    std::lock_guard<std::mutex> hold(file.m_lock);
    error = file.Connect();
    if (error != kErrorSuccess) return error;
    return file.Write([&](int* busy) -> uint32_t {
      int rc;
      const int64_t id = FindKey(file, base.tree, path, &rc);
      if (IsBusy(rc)) *busy = rc;
      if (id == 0) return rc == SQLITE_DONE ? kErrorFileNotFound : ErrorFromSqlite(rc);
      sqlite3_stmt* stmt = file.Statement(kHasChild);
      sqlite3_bind_int64(stmt, 1, id);
      rc = StepInWrite(stmt, busy);
      sqlite3_reset(stmt);
      if (rc == SQLITE_ROW) return kErrorAccessDenied;  // subkeys first
      if (rc != SQLITE_DONE) return ErrorFromSqlite(rc);
      for (Stmt which : {kDeleteKeyValues, kDeleteKey}) {
        stmt = file.Statement(which);
        sqlite3_bind_int64(stmt, 1, id);
        rc = StepInWrite(stmt, busy);
        sqlite3_reset(stmt);
        if (rc != SQLITE_DONE) return ErrorFromSqlite(rc);
      }
      return kErrorSuccess;
    });
  });
}

uint32_t RegEnumKeyEx(RegKey key, uint32_t index, char16_t* name, uint32_t* length) noexcept {
  return Guarded([&]() -> uint32_t {
    std::unique_ptr<COpenKey> temp;
    uint32_t error;
    COpenKey* open = KeyOf(key, &temp, &error);
    if (open == nullptr) return error;
    if (length == nullptr) return kErrorInvalidParameter;
    CStoreFile& file = *open->file;
    std::lock_guard<std::mutex> hold(file.m_lock);
    error = file.Connect();
    if (error != kErrorSuccess) return error;
    // Subkeys are read 64 at a time. The next index is served from that batch while no process
    // has written to the file since it was read; otherwise, or at the batch's end, the store is
    // asked again: from the last name when nothing was written since, else counting from the start.
    CEnumCursor& cursor = open->keys;
    const bool following = cursor.valid && index == cursor.index + 1;
    const uint64_t version = file.Version();
    if (!following || cursor.version != version || cursor.next >= cursor.batch.size()) {
      sqlite3_stmt* stmt;
      if (following && cursor.version == version) {
        stmt = file.Statement(kChildAfter);
        sqlite3_bind_int64(stmt, 1, open->id);
        sqlite3_bind_text(stmt, 2, cursor.lastPath.data(), static_cast<int>(cursor.lastPath.size()), SQLITE_STATIC);
      } else {
        stmt = file.Statement(kChildAt);
        sqlite3_bind_int64(stmt, 1, open->id);
        sqlite3_bind_int64(stmt, 2, index);
      }
      cursor.batch.clear();
      cursor.next = 0;
      int rc;
      while ((rc = file.Step(stmt)) == SQLITE_ROW) {
        cursor.batch.emplace_back(
            std::string(reinterpret_cast<const char*>(sqlite3_column_text(stmt, 0)), static_cast<size_t>(sqlite3_column_bytes(stmt, 0))),
            std::string(reinterpret_cast<const char*>(sqlite3_column_text(stmt, 1)), static_cast<size_t>(sqlite3_column_bytes(stmt, 1))));
      }
      sqlite3_reset(stmt);
      if (rc != SQLITE_DONE) {
        cursor.valid = false;
        cursor.batch.clear();
        return ErrorFromSqlite(rc);
      }
      cursor.version = version;
    }
    if (cursor.next >= cursor.batch.size()) {
      cursor.valid = false;
      return kErrorNoMoreItems;
    }
    const auto& [text, path] = cursor.batch[cursor.next++];
    error = DeliverName(reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()), name, length);
    cursor.lastPath = path;
    cursor.valid = true;
    cursor.index = index;
    return error;
  });
}

uint32_t RegEnumValue(RegKey key, uint32_t index, char16_t* name, uint32_t* nameLength, uint32_t* type, void* data,
                      uint32_t* dataSize) noexcept {
  return Guarded([&]() -> uint32_t {
    std::unique_ptr<COpenKey> temp;
    uint32_t error;
    COpenKey* open = KeyOf(key, &temp, &error);
    if (open == nullptr) return error;
    if (nameLength == nullptr) return kErrorInvalidParameter;
    CStoreFile& file = *open->file;
    std::lock_guard<std::mutex> hold(file.m_lock);
    error = file.Connect();
    if (error != kErrorSuccess) return error;
    CEnumCursor& cursor = open->values;
    const uint64_t version = file.Version();
    sqlite3_stmt* stmt;
    if (cursor.valid && cursor.version == version && index == cursor.index + 1) {
      stmt = file.Statement(kValueAfter);
      sqlite3_bind_int64(stmt, 1, open->id);
      sqlite3_bind_int64(stmt, 2, cursor.lastId);
    } else {
      stmt = file.Statement(kValueAt);
      sqlite3_bind_int64(stmt, 1, open->id);
      sqlite3_bind_int64(stmt, 2, index);
    }
    const int rc = file.Step(stmt);
    if (rc != SQLITE_ROW) {
      sqlite3_reset(stmt);
      cursor.valid = false;
      return rc == SQLITE_DONE ? kErrorNoMoreItems : ErrorFromSqlite(rc);
    }
    cursor.valid = true;
    cursor.index = index;
    cursor.version = version;
    cursor.lastId = sqlite3_column_int64(stmt, 0);
    error = DeliverName(sqlite3_column_text(stmt, 1), sqlite3_column_bytes(stmt, 1), name, nameLength);
    if (type != nullptr) *type = static_cast<uint32_t>(sqlite3_column_int64(stmt, 2));
    if (error == kErrorSuccess) {
      error = DeliverData(sqlite3_column_blob(stmt, 3), static_cast<uint32_t>(sqlite3_column_bytes(stmt, 3)),
                          data, dataSize);
    }
    sqlite3_reset(stmt);
    return error;
  });
}

}  // namespace qz::os
