/* What a program in C would do for itself: open a SQLite file, run one statement, close.
   bare_sqlite make FILE makes the table, get FILE prints the value, set FILE VALUE stores it.
   The log is kept as the library keeps it: up to 256 KiB stay when the last program leaves. */

#include <sqlite3.h>
#include <stdio.h>
#include <string.h>

static char const kTables[] =
    "PRAGMA journal_mode=WAL;"
    "CREATE TABLE IF NOT EXISTS value(section TEXT NOT NULL, name TEXT NOT NULL,"
    " value TEXT NOT NULL, PRIMARY KEY(section,name)) WITHOUT ROWID";
static char const kGet[] = "SELECT value FROM value WHERE section='Audio' AND name='Volume'";
static char const kSet[] =
    "INSERT INTO value VALUES('Audio','Volume',?1)"
    " ON CONFLICT(section,name) DO UPDATE SET value=excluded.value";

/* Takes the place of the automatic checkpoint. */
static int KeepLogShort(void *unused, sqlite3 *database, char const *name, int pages) {
  (void)unused;
  if (pages <= 64) return SQLITE_OK;
  return sqlite3_wal_checkpoint_v2(database, name, SQLITE_CHECKPOINT_TRUNCATE, NULL, NULL);
}

static int Get(sqlite3 *database) {
  sqlite3_stmt *statement = NULL;
  sqlite3_prepare_v2(database, kGet, -1, &statement, NULL);
  int const found = sqlite3_step(statement) == SQLITE_ROW;
  if (found) puts((char const *)sqlite3_column_text(statement, 0));
  sqlite3_finalize(statement);
  return found;
}

static int Set(sqlite3 *database, char const *value) {
  sqlite3_stmt *statement = NULL;
  sqlite3_prepare_v2(database, kSet, -1, &statement, NULL);
  sqlite3_bind_text(statement, 1, value, -1, SQLITE_STATIC);
  int const done = sqlite3_step(statement) == SQLITE_DONE;
  sqlite3_finalize(statement);
  return done;
}

int main(int count, char **arguments) {
  sqlite3 *database = NULL;
  if (count < 3 || sqlite3_open(arguments[2], &database) != SQLITE_OK) return 2;
  int done = 0;
  sqlite3_wal_hook(database, KeepLogShort, NULL);
  sqlite3_db_config(database, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, NULL);
  sqlite3_exec(database, "PRAGMA synchronous=NORMAL", NULL, NULL, NULL);
  if (strcmp(arguments[1], "make") == 0) {
    done = sqlite3_exec(database, kTables, NULL, NULL, NULL) == SQLITE_OK;
  } else if (count == 3) {
    done = Get(database);
  } else {
    done = Set(database, arguments[3]);
  }
  sqlite3_close(database);
  return done ? 0 : 1;
}
