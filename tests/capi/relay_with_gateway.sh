#!/usr/bin/env bash
# The program that with_relay.sh starts where a WAP gateway is wanted beside the relay.
exec "$MMSBRIX_TEST_PROGRAM" "$@" --wap 127.0.0.1:0
