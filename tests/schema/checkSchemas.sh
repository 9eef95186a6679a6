#!/bin/sh
# checkSchemas.sh PROGRAM PIPELINES VALIDATE: checks pipelines and JSON answers against the schemas that PROGRAM prints.
set -eu
program=$1
pipelines=$2
validate=$3
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cd "$scratch"
tavrin() { "$program" --quiet "$@"; }
valid()
{
    tavrin schema "$1" >schema.json
    shift
    /usr/bin/python3 "$validate" schema.json "$@"
}

[ -x /usr/bin/python3 ] || exit 77
tavrin examples . >/dev/null
valid pipeline "$pipelines"/*.yaml
printf 'steps: [{id: a, algorithm: Field/Info, options: {Feld: x}}]\n' >wrong.yaml
if valid pipeline wrong.yaml >/dev/null; then
    echo "the schema of pipelines accepts an unknown option"
    exit 1
fi

tavrin list --json >list.json
valid list list.json
tavrin describe hedge --json >describe.json
valid describe describe.json
tavrin info double_gyre.pvd --stats --times --json >info.json
valid info info.json
tavrin run info field=flow.vtu --report run.json >/dev/null
tavrin run info field=double_gyre.pvd --each-step --report steps.json >/dev/null
tavrin pipeline difference.yaml --set a=flow.vtu --set b=abc_flow.vti --report pipeline.json >/dev/null 2>&1
valid report run.json steps.json pipeline.json
