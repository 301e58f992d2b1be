"""morvanectl: which variant of the device it speaks of."""

import json

import pytest
from harness import SOURCE
from test_morvanectl import ERROR, NO, YES, ctl  # noqa: F401 - a fixture

PARAMETERS = """\
input index { rangeValid { 1..(inputs) } }
gain rw { index { input } default { (start) } }
aux rw { ctrlValid (model == "studio") ctrlRO (gain == 1) }
"""
PRESETS = "all preset { }\n"
VARIANTS = """\
# of this device
field: inputs=1 model=field start=0
studio: inputs=2 model=studio start=0 options="a b"
"""
UNDESCRIBED = "morvanectl: warning: nothing gives a value to {}, which p uses; describe the " \
              "device with --system or --variant\n"


@pytest.fixture
def of_variant(world, ctl):  # noqa: F811
    """Runs a command on definitions with named variants; returns (status, stdout, stderr)."""
    world.write("p", PARAMETERS)
    world.write("d", PRESETS)
    world.write("variants", VARIANTS)

    def run(*arguments, environment=None):
        return ctl(*arguments, definitions=("-p", "p", "-d", "d"), bus=False,
                   environment=environment)

    return run


@pytest.mark.parametrize("options, keys", [
    (["--variant", "field"], "gain[1]\n"),
    (["--variant", "studio"], "aux\ngain[1]\ngain[2]\n"),
    (["--variant", "studio", "-s", "inputs=1"], "aux\ngain[1]\n"),
    (["-s", "inputs=1", "-s", "inputs=1", "--variant", "studio"], "aux\ngain[1]\n"),
    (["-s", "inputs=1", "-s", "model=none"], "gain[1]\n"),
])
def test_takes_the_arguments_of_a_variant_and_of_the_options(of_variant, options, keys):
    assert of_variant("keys", "all", *options) == (YES, keys, "")


def test_explains_with_the_arguments_of_the_variant(of_variant):
    assert of_variant("explain", "all", "aux", "--variant", "field") == (
        NO, "aux is not in all\n"
        "    p:3: aux is rw\n"
        "    p:3: ctrlValid (model == \"studio\") does not hold (model is field)\n", "")


def test_warns_of_names_that_nothing_gives(of_variant, world):
    world.write("variants", "field: inputs=1\n")
    assert of_variant("presets") == (YES, "", UNDESCRIBED.format("model, start"))
    assert of_variant("presets", "-s", "model=studio") == (
        YES, "all\n", UNDESCRIBED.format("start"))
    assert of_variant("presets", "-s", "model=studio", "-s", "start=1") == (YES, "all\n", "")
    (world.folder / "variants").unlink()
    assert of_variant("explain", "all", "gain[1]")[2] == UNDESCRIBED.format("inputs, model, start")
    assert of_variant("load-default", "all", "--dry-run")[2].startswith(
        UNDESCRIBED.format("inputs, model, start"))


def test_reads_the_list_of_variants_that_is_named(of_variant, world):
    world.write("others", "other: inputs=1 model=studio start=1\n")
    assert of_variant("keys", "all", "--variants", "others", "--variant", "other") == (
        YES, "aux\ngain[1]\n", "")
    assert of_variant("keys", "all", "--variant", "other",
                      environment={"MORVANE_VARIANTS": "others"}) == (YES, "aux\ngain[1]\n", "")
    assert of_variant("keys", "all", "--variants", "variants", "--variant", "field",
                      environment={"MORVANE_VARIANTS": "others"}) == (YES, "gain[1]\n", "")
    assert of_variant("presets", "--variants", "nowhere") == (
        ERROR, "", "morvanectl: cannot read nowhere: No such file or directory\n")
    assert of_variant("presets", "--variants", ".") == (
        ERROR, "", "morvanectl: cannot read .: Is a directory\n")


def test_refuses_what_the_list_of_variants_does_not_have(of_variant, world):
    assert of_variant("keys", "all", "--variant", "other") == (
        ERROR, "", "morvanectl: no variant other in variants, which has: field, studio\n")
    (world.folder / "variants").unlink()
    assert of_variant("keys", "all", "--variant", "other") == (
        ERROR, "", "morvanectl: no variant other in variants\n")
    assert of_variant("check", "--all-variants") == (
        ERROR, "", "morvanectl: there are no named variants; see --variants, or give "
        "--all-variants system arguments with all their values\n")


def test_refuses_a_wrong_list_of_variants(of_variant, world):
    world.write("variants", "field: inputs=1\nstudio inputs=2\n")
    assert of_variant("keys", "all", "--variant", "field") == (
        ERROR, "", "variants:2:1: error: a line is \"NAME: argument argument ...\"\n"
        "studio inputs=2\n^\n")
    world.write("variants", "\nfield: inputs=1\n\n \tfield: inputs=2")
    assert of_variant("keys", "all", "--json") == (
        ERROR, "", '{"file":"variants","line":4,"column":3,"severity":"error","code":"variants",'
        '"text":"there is a variant field already","variants":[]}\n')


def test_refuses_two_values_of_one_argument(of_variant):
    assert of_variant("presets", "-s", "inputs=1", "-s", "a=b", "-s", "inputs=2") == (
        ERROR, "", "morvanectl: inputs=1 and inputs=2 give one system argument two values\n")


def test_checks_all_named_variants(of_variant):
    status, output, problem = of_variant("check", "--all-variants", "--json")
    assert (status, output, problem) == (YES, "[]\n", "")
    status, output, _ = of_variant("check", "--all-variants", "-s", "start=x", "-s", "inputs=0",
                                   "--json", "--verbose")
    assert status == YES
    assert [(finding["severity"], finding["text"].partition(",")[0], finding["variants"])
            for finding in json.loads(output)] == [
        ("warning", "index input has no value", ["field", "studio"]),
        ("note", "preset all covers no key", ["field"])]


def test_a_name_that_a_variant_gives_is_not_missing_on_the_others(of_variant, world):
    world.write("variants", "field: inputs=1 start=0\nstudio: inputs=2 start=0 model=studio\n")
    assert of_variant("check", "--all-variants", "--strict") == (YES, "", "")
    assert of_variant("check", "--variant", "field", "--strict") == (YES, "", "")
    status, output, problem = of_variant("check", "--all-variants", "inputs=1", "start=1",
                                         "--strict", "--variants", "/dev/null")
    assert (status, output, problem) == (NO, """\
p:3:21: warning: nothing gives a value to model, so what uses it cannot be computed
aux rw { ctrlValid (model == "studio") ctrlRO (gain == 1) }
                    ^
""", "")


def test_finds_nothing_in_the_examples(world, ctl):  # noqa: F811
    examples = SOURCE / "examples"
    assert ctl("check", "--all-variants", "--strict", bus=False, definitions=(
        "-p", str(examples / "parameters.def"), "-d", str(examples / "presets.def"))) == (
        YES, "", "")


def test_a_comma_behind_a_backslash_belongs_to_a_value(of_variant):
    _, output, _ = of_variant("check", "--json", "--all-variants", "inputs=0", "start=1",
                              r"model=a\,b,c\d")
    assert json.loads(output)[0]["variants"] == [
        "inputs=0 start=1 model=a,b", r"inputs=0 start=1 model=c\d"]
