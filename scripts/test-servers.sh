#!/usr/bin/env bash
# Throwaway database servers for the tests labelled "server": a PostgreSQL and
# a MariaDB on loopback, each in a temporary folder, with the test database,
# a user and an ODBC data source (ketrova_pg, ketrova_maria) in a temporary
# odbc.ini. The test user may create databases (tests running in parallel
# each take one of their own). scripts/test.sh sources this file, calls start_test_servers and
# stops them again with stop_test_servers, however the tests end.
#
# A server that cannot start is reported and left out; its tests then skip.
# Can also be run by hand: scripts/test-servers.sh start|stop (prints the
# exports to use).

KETROVA_TEST_DB=ketrova_test
KETROVA_TEST_USER=ketrova
KETROVA_TEST_PASSWORD=ketrova

_ts_log() { echo "test-servers: $*" >&2; }

# A free TCP port on loopback.
_ts_free_port() {
  if command -v python3 >/dev/null 2>&1; then
    python3 -c 'import socket; s=socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1]); s.close()'
  else
    local port
    for port in $(shuf -i 20000-60000 -n 50); do
      if ! (exec 3<>"/dev/tcp/127.0.0.1/$port") 2>/dev/null; then
        echo "$port"
        return
      fi
    done
  fi
}

# Runs a command as the given user when we are root, else as ourselves.
_ts_as() {
  local user=$1
  shift
  if [ "$(id -u)" = 0 ]; then
    runuser -u "$user" -- "$@"
  else
    "$@"
  fi
}

_ts_start_postgres() {
  local bindir
  bindir=$(ls -d /usr/lib/postgresql/*/bin 2>/dev/null | sort -V | tail -1)
  if [ -z "$bindir" ] || [ ! -x "$bindir/initdb" ]; then
    _ts_log "no PostgreSQL server installed"
    return 1
  fi
  local owner=postgres
  [ "$(id -u)" = 0 ] || owner=$(id -un)
  local dir=$KETROVA_SERVERS_DIR/pg
  mkdir -p "$dir"
  [ "$(id -u)" = 0 ] && chown "$owner" "$dir"
  KETROVA_PG_PORT=$(_ts_free_port)
  _ts_as "$owner" "$bindir/initdb" -D "$dir/data" -U "$KETROVA_TEST_USER" --auth=trust \
    -E UTF8 --locale=C.UTF-8 >"$dir/initdb.log" 2>&1 || {
    _ts_log "initdb failed, see $dir/initdb.log"
    return 1
  }
  _ts_as "$owner" "$bindir/pg_ctl" -D "$dir/data" -l "$dir/server.log" -w -t 30 \
    -o "-p $KETROVA_PG_PORT -k $dir -c listen_addresses=127.0.0.1 -c fsync=off" start \
    >/dev/null 2>&1 || {
    _ts_log "PostgreSQL did not start, see $dir/server.log"
    return 1
  }
  KETROVA_PG_BIN=$bindir
  KETROVA_PG_OWNER=$owner
  psql -h 127.0.0.1 -p "$KETROVA_PG_PORT" -U "$KETROVA_TEST_USER" -d postgres -q \
    -c "CREATE DATABASE $KETROVA_TEST_DB ENCODING 'UTF8' TEMPLATE template0" >/dev/null || {
    _ts_log "cannot create the PostgreSQL test database"
    return 1
  }
  cat >>"$KETROVA_SERVERS_DIR/odbc.ini" <<EOF
[ketrova_pg]
Driver=PostgreSQL Unicode
Servername=127.0.0.1
Port=$KETROVA_PG_PORT
Database=$KETROVA_TEST_DB
Username=$KETROVA_TEST_USER
Password=
SSLMode=disable

EOF
  export KETROVA_TEST_PG=1
}

_ts_start_mariadb() {
  local server installer admin client
  server=$(command -v mariadbd || command -v mysqld || ls /usr/sbin/mariadbd /usr/sbin/mysqld 2>/dev/null | head -1)
  installer=$(command -v mariadb-install-db || command -v mysql_install_db)
  admin=$(command -v mariadb-admin || command -v mysqladmin)
  client=$(command -v mariadb || command -v mysql)
  if [ -z "$server" ] || [ -z "$installer" ]; then
    _ts_log "no MariaDB server installed"
    return 1
  fi
  local dir=$KETROVA_SERVERS_DIR/maria
  mkdir -p "$dir"
  local user
  user=$(id -un)
  KETROVA_MARIA_PORT=$(_ts_free_port)
  KETROVA_MARIA_SOCKET=$dir/mysqld.sock
  "$installer" --no-defaults --datadir="$dir/data" --user="$user" --skip-test-db \
    --auth-root-authentication-method=normal >"$dir/install.log" 2>&1 || {
    _ts_log "mariadb-install-db failed, see $dir/install.log"
    return 1
  }
  "$server" --no-defaults --datadir="$dir/data" --socket="$KETROVA_MARIA_SOCKET" \
    --port="$KETROVA_MARIA_PORT" --bind-address=127.0.0.1 --user="$user" \
    --pid-file="$dir/mysqld.pid" --log-error="$dir/server.log" --skip-log-bin \
    --innodb-buffer-pool-size=32M --innodb-flush-log-at-trx-commit=2 \
    --character-set-server=utf8mb4 --collation-server=utf8mb4_unicode_ci >/dev/null 2>&1 &
  local i
  for i in $(seq 1 100); do
    "$admin" --no-defaults --socket="$KETROVA_MARIA_SOCKET" -uroot ping >/dev/null 2>&1 && break
    sleep 0.2
  done
  if ! "$admin" --no-defaults --socket="$KETROVA_MARIA_SOCKET" -uroot ping >/dev/null 2>&1; then
    _ts_log "MariaDB did not start, see $dir/server.log"
    return 1
  fi
  "$client" --no-defaults --socket="$KETROVA_MARIA_SOCKET" -uroot <<EOF || {
CREATE DATABASE $KETROVA_TEST_DB CHARACTER SET utf8mb4;
CREATE USER '$KETROVA_TEST_USER'@'127.0.0.1' IDENTIFIED BY '$KETROVA_TEST_PASSWORD';
CREATE USER '$KETROVA_TEST_USER'@'localhost' IDENTIFIED BY '$KETROVA_TEST_PASSWORD';
GRANT ALL ON *.* TO '$KETROVA_TEST_USER'@'127.0.0.1';
GRANT ALL ON *.* TO '$KETROVA_TEST_USER'@'localhost';
EOF
    _ts_log "cannot create the MariaDB test database"
    return 1
  }
  cat >>"$KETROVA_SERVERS_DIR/odbc.ini" <<EOF
[ketrova_maria]
Driver=MariaDB Unicode
Server=127.0.0.1
Port=$KETROVA_MARIA_PORT
Database=$KETROVA_TEST_DB
User=$KETROVA_TEST_USER
Password=$KETROVA_TEST_PASSWORD

EOF
  export KETROVA_TEST_MARIA=1
}

start_test_servers() {
  KETROVA_SERVERS_DIR=$(mktemp -d "${TMPDIR:-/tmp}/ketrova-servers.XXXXXX")
  chmod 755 "$KETROVA_SERVERS_DIR"
  export KETROVA_SERVERS_DIR
  # The drivers stay those of the machine; the data sources are ours.
  cp /etc/odbcinst.ini "$KETROVA_SERVERS_DIR/odbcinst.ini" 2>/dev/null || : >"$KETROVA_SERVERS_DIR/odbcinst.ini"
  : >"$KETROVA_SERVERS_DIR/odbc.ini"
  export ODBCSYSINI=$KETROVA_SERVERS_DIR
  export ODBCINI=$KETROVA_SERVERS_DIR/odbc.ini
  _ts_start_postgres || _ts_log "PostgreSQL tests will be skipped"
  _ts_start_mariadb || _ts_log "MariaDB tests will be skipped"
  _ts_log "servers in $KETROVA_SERVERS_DIR (PostgreSQL: ${KETROVA_TEST_PG:-no}, MariaDB: ${KETROVA_TEST_MARIA:-no})"
}

stop_test_servers() {
  [ -n "${KETROVA_SERVERS_DIR:-}" ] && [ -d "$KETROVA_SERVERS_DIR" ] || return 0
  if [ -f "$KETROVA_SERVERS_DIR/pg/data/postmaster.pid" ] && [ -n "${KETROVA_PG_BIN:-}" ]; then
    _ts_as "$KETROVA_PG_OWNER" "$KETROVA_PG_BIN/pg_ctl" -D "$KETROVA_SERVERS_DIR/pg/data" -m immediate \
      -w stop >/dev/null 2>&1 || true
  fi
  if [ -f "$KETROVA_SERVERS_DIR/maria/mysqld.pid" ]; then
    local pid
    pid=$(cat "$KETROVA_SERVERS_DIR/maria/mysqld.pid")
    kill "$pid" 2>/dev/null || true
    local i
    for i in $(seq 1 50); do
      kill -0 "$pid" 2>/dev/null || break
      sleep 0.2
    done
    kill -9 "$pid" 2>/dev/null || true
  fi
  rm -rf "$KETROVA_SERVERS_DIR"
  unset KETROVA_SERVERS_DIR KETROVA_TEST_PG KETROVA_TEST_MARIA
}

# Run by hand: start, print what to export, and wait for Enter to stop.
if [ "${BASH_SOURCE[0]}" = "$0" ]; then
  set -uo pipefail
  start_test_servers
  trap stop_test_servers EXIT
  echo "export ODBCSYSINI=$ODBCSYSINI ODBCINI=$ODBCINI KETROVA_TEST_PG=${KETROVA_TEST_PG:-} KETROVA_TEST_MARIA=${KETROVA_TEST_MARIA:-}"
  if [ "${1:-}" = "--run" ]; then
    shift
    "$@"
  else
    echo "Press Enter to stop the servers."
    read -r _
  fi
fi
