// registry_bench.cpp - the platform's registry beside raw SQLite on the very same file: a read of
// a value under a key of depth 4 beside a prepared point query, a write beside a prepared upsert in
// a transaction of its own, and the walk of 10,000 subkeys beside one ordered scan.
//
// The store lives in a temporary QZCORE_REGISTRY_DIR; the raw figures use a second connection to
// its machine file with the same settings (WAL, synchronous FULL), so both pay the same disk.
#include <benchmark/benchmark.h>
#include <sqlite3.h>
#include <stdlib.h>

#include <cstring>
#include <filesystem>
#include <string>
#include <thread>

#include "qzcore.h"

namespace {

const bool g_multiThreaded = [] {
  std::thread([] {}).join();
  return true;
}();

constexpr int kSubKeys = 10000;
const char16_t kDeepKey[] = u"Bench\\Level2\\Level3\\Level4";

// The store, filled once for the whole run.
struct CStore {
  std::string dir;
  sqlite3* raw = nullptr;
  CStore() {
    char pattern[] = "/tmp/qzcore-registry-bench-XXXXXX";
    dir = mkdtemp(pattern);
    setenv("QZCORE_REGISTRY_DIR", dir.c_str(), 1);
    QZRegistrySetValue(QZ_HKEY_CONFIG_64, kDeepKey, u"Value", QZ_REG_SZ, u"some text", 20);
    QZRegistrySetValue(QZ_HKEY_CONFIG_64, kDeepKey, u"Upsert", QZ_REG_SZ, u"x", 4);
    QZRegistrySetValue(QZ_HKEY_CONFIG_64, u"Bench\\Raw", u"Upsert", QZ_REG_SZ, u"x", 4);
    // 10,000 subkeys made in one go through the raw file (the store's own writes would take minutes
    // of fsyncs); the layout is the store's own.
    sqlite3_open((dir + "/machine.db").c_str(), &raw);
    sqlite3_busy_timeout(raw, 10000);
    sqlite3_exec(raw, "PRAGMA synchronous=FULL", nullptr, nullptr, nullptr);
    QZRegistrySetValue(QZ_HKEY_CONFIG_64, u"Wide", u"v", QZ_REG_SZ, u"", 2);
    sqlite3_exec(raw, "BEGIN", nullptr, nullptr, nullptr);
    sqlite3_stmt* insert;
    sqlite3_prepare_v2(raw,
                       "INSERT INTO keys(tree, parent, name, path) SELECT 4, id, ?1, 'wide\\' || lower(?1)"
                       " FROM keys WHERE tree=4 AND path='wide'",
                       -1, &insert, nullptr);
    for (int i = 0; i < kSubKeys; ++i) {
      const std::string name = "Child" + std::to_string(100000 + i);
      sqlite3_bind_text(insert, 1, name.c_str(), -1, SQLITE_TRANSIENT);
      sqlite3_step(insert);
      sqlite3_reset(insert);
    }
    sqlite3_finalize(insert);
    sqlite3_exec(raw, "COMMIT", nullptr, nullptr, nullptr);
  }
  ~CStore() {
    sqlite3_close(raw);
    std::error_code ec;
    std::filesystem::remove_all(dir, ec);
  }
};

CStore& Store() {
  static CStore store;
  return store;
}

void BM_QZRegistryGetValue_Depth4(benchmark::State& state) {
  Store();
  char16_t buffer[64];
  for (auto _ : state) {
    uint32_t size = sizeof buffer, type = 0;
    if (QZRegistryGetValue(QZ_HKEY_CONFIG_64, kDeepKey, u"Value", &type, buffer, &size) != 0) state.SkipWithError("read failed");
    benchmark::DoNotOptimize(buffer);
  }
}
BENCHMARK(BM_QZRegistryGetValue_Depth4);

void BM_RawSqlitePointQuery_Depth4(benchmark::State& state) {
  sqlite3* db = Store().raw;
  sqlite3_stmt* stmt;
  sqlite3_prepare_v2(db,
                     "SELECT v.type, v.data FROM vals v JOIN keys k ON v.key = k.id"
                     " WHERE k.tree = ?1 AND k.path = ?2 AND v.folded = ?3",
                     -1, &stmt, nullptr);
  char buffer[64];
  for (auto _ : state) {
    sqlite3_bind_int(stmt, 1, 4);
    sqlite3_bind_text(stmt, 2, "bench\\level2\\level3\\level4", -1, SQLITE_STATIC);
    sqlite3_bind_text(stmt, 3, "value", -1, SQLITE_STATIC);
    if (sqlite3_step(stmt) != SQLITE_ROW) state.SkipWithError("query failed");
    std::memcpy(buffer, sqlite3_column_blob(stmt, 1), static_cast<size_t>(sqlite3_column_bytes(stmt, 1)));
    benchmark::DoNotOptimize(buffer);
    sqlite3_reset(stmt);
  }
  sqlite3_finalize(stmt);
}
BENCHMARK(BM_RawSqlitePointQuery_Depth4);

void BM_QZRegistrySetValue_Depth4(benchmark::State& state) {
  Store();
  uint32_t n = 0;
  for (auto _ : state) {
    ++n;
    if (QZRegistrySetValue(QZ_HKEY_CONFIG_64, kDeepKey, u"Upsert", QZ_REG_DWORD, &n, 4) != 0) state.SkipWithError("write failed");
  }
}
BENCHMARK(BM_QZRegistrySetValue_Depth4);

void BM_RawSqliteUpsertTransaction(benchmark::State& state) {
  sqlite3* db = Store().raw;
  sqlite3_stmt* key;
  sqlite3_prepare_v2(db, "SELECT id FROM keys WHERE tree=4 AND path='bench\\raw'", -1, &key, nullptr);
  sqlite3_step(key);
  const sqlite3_int64 id = sqlite3_column_int64(key, 0);
  sqlite3_finalize(key);
  sqlite3_stmt *begin, *upsert, *commit;
  sqlite3_prepare_v2(db, "BEGIN IMMEDIATE", -1, &begin, nullptr);
  sqlite3_prepare_v2(db,
                     "INSERT INTO vals(key, name, folded, type, data) VALUES(?1, 'Upsert', 'upsert', 4, ?2)"
                     " ON CONFLICT(key, folded) DO UPDATE SET type=excluded.type, data=excluded.data",
                     -1, &upsert, nullptr);
  sqlite3_prepare_v2(db, "COMMIT", -1, &commit, nullptr);
  uint32_t n = 0;
  for (auto _ : state) {
    ++n;
    sqlite3_step(begin);
    sqlite3_reset(begin);
    sqlite3_bind_int64(upsert, 1, id);
    sqlite3_bind_blob(upsert, 2, &n, 4, SQLITE_STATIC);
    if (sqlite3_step(upsert) != SQLITE_DONE) state.SkipWithError("upsert failed");
    sqlite3_reset(upsert);
    sqlite3_step(commit);
    sqlite3_reset(commit);
  }
  sqlite3_finalize(begin);
  sqlite3_finalize(upsert);
  sqlite3_finalize(commit);
}
BENCHMARK(BM_RawSqliteUpsertTransaction);

void BM_QZRegistryEnumerate10000SubKeys(benchmark::State& state) {
  Store();
  for (auto _ : state) {
    QZRegEnumHandle e;
    QZRegistryOpenKeyEnum(QZ_HKEY_CONFIG_64, u"Wide", &e);
    char16_t name[256];
    int count = 0;
    for (uint32_t size = 256; QZRegistryEnumNextKey(e, name, &size) == 0; size = 256) ++count;
    QZRegistryCloseEnum(e);
    if (count != kSubKeys) state.SkipWithError("wrong count");
  }
  state.SetItemsProcessed(state.iterations() * kSubKeys);
}
BENCHMARK(BM_QZRegistryEnumerate10000SubKeys)->Unit(benchmark::kMillisecond);

void BM_RawSqliteScan10000SubKeys(benchmark::State& state) {
  sqlite3* db = Store().raw;
  sqlite3_stmt* stmt;
  sqlite3_prepare_v2(db,
                     "SELECT c.name FROM keys c JOIN keys p ON c.parent = p.id"
                     " WHERE p.tree = 4 AND p.path = 'wide' ORDER BY c.path",
                     -1, &stmt, nullptr);
  for (auto _ : state) {
    int count = 0;
    while (sqlite3_step(stmt) == SQLITE_ROW) {
      benchmark::DoNotOptimize(sqlite3_column_text(stmt, 0));
      ++count;
    }
    sqlite3_reset(stmt);
    if (count != kSubKeys) state.SkipWithError("wrong count");
  }
  sqlite3_finalize(stmt);
  state.SetItemsProcessed(state.iterations() * kSubKeys);
}
BENCHMARK(BM_RawSqliteScan10000SubKeys)->Unit(benchmark::kMillisecond);

}  // namespace
