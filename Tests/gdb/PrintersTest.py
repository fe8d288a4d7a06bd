# Run by gdb on gdb-printed-values: compares what is printed at each stop in `look` with what is expected.

import re
import traceback

import gdb

# For each stop: expressions, and the whole text that each is printed as.
EXPECTED = [
    {
        'null': 'null',
        'yes': 'true',
        'no': 'false',
        'number': '-2.5',
        'whole': '1700000000',
        'text': r'"a \"quoted\" word"',
        'emptyText': '""',
        'message': 'JSON object of 2 = {["method"] = "turn/started", ["params"] = JSON object of 2 = {'
                   '["ids"] = JSON array of 3 = {1, "two", null}, ["none"] = JSON object of 0}}',
        'built': 'JSON array of 3 = {1, JSON object of 1 = {["key"] = "value"}, JSON array of 0}',
        'inside': 'JSON object of 2 = {["ids"] = JSON array of 3 = {1, "two", null}, ["none"] = JSON object of 0}',
        'members': 'JSON object of 2 = {["ids"] = JSON array of 3 = {1, "two", null}, ["none"] = JSON object of 0}',
        'elements': 'JSON array of 3 = {1, "two", null}',
        'source': 'null',
        'moved': '"moved"',
        'nothing': ['std::optional<ormel::JSONValue> [no contained value]', '*<no JSON value>*'],
        'noText': '""',
        'shorter': '"Hello"',
        'longer': '"Hello, agent"',
        'item': '{AgentMessageItem = {id = *, text = "Hello", phase = *}}',
        'search': '{WebSearchItem = {id = *}}',
        'event': '{ItemUpdatedEvent = {item = {AgentMessageItem = {id = *, text = "Hello", phase = *}}}}',
        'recovery': '{AuthRecoveryCompletedEvent = {<ormel::AuthRecoveryEvent> = {*}, <No data fields>}}',
        'target': '{ReviewCustom = {instructions = *}}',
        'config': '{long = 7}',
    },
    {
        'none': 'no coroutine',
        'fresh': '(anonymous namespace)::doubled, not started',
        'paused': '(anonymous namespace)::doubled, running',
        'failing': '(anonymous namespace)::doubled, running',
        'silent': '(anonymous namespace)::waiting, running',
    },
    {
        'fresh': '(anonymous namespace)::doubled, not started',
        'paused': '(anonymous namespace)::doubled, ended = {result = 42}',
        'failing': '(anonymous namespace)::doubled, ended = {error = std::invalid_argument}',
        'silent': '(anonymous namespace)::waiting, ended',
    },
]


def fits(printed, expected):
    if isinstance(expected, list):
        return any(fits(printed, text) for text in expected)
    # A star stands for what the standard library's own printers show, where it has any.
    return re.fullmatch('.*'.join(map(re.escape, expected.split('*'))), printed, re.DOTALL) is not None


def check_stop(number, expected):
    gdb.execute('up', to_string=True)
    failures = 0
    for expression, text in expected.items():
        value = gdb.parse_and_eval(expression)
        if value.type.code == gdb.TYPE_CODE_REF:
            value = value.referenced_value()
        printed = value.format_string(max_elements=200)
        if not fits(printed, text):
            failures += 1
            print(f'stop {number}: {expression}\n  expected {text}\n  printed  {printed}')
    return failures


def check():
    for setting in ['confirm off', 'pagination off', 'width 0', 'disable-randomization off', 'print pretty off']:
        gdb.execute(f'set {setting}')
    gdb.Breakpoint('look')
    gdb.execute('run', to_string=True)
    failures = 0
    for number, expected in enumerate(EXPECTED):
        failures += check_stop(number, expected)
        gdb.execute('continue', to_string=True)
    exit_code = gdb.convenience_variable('_exitcode')
    if exit_code != 0:
        failures += 1
        print(f'the program ended with {exit_code}')
    values = sum(map(len, EXPECTED))
    print(f'{values - failures} of {values} values are printed as expected')
    return failures


# gdb goes on after an error in a script, so that the status must be given by hand.
status = 1
try:
    status = 1 if check() else 0
except BaseException:
    traceback.print_exc()
gdb.flush()
gdb.execute(f'quit {status}')
