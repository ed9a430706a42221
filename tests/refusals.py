"""How platform operations refuse."""

STATUSES = [1, 0xBAD0001, 0xBAD0003, 0xBAD0007, 0xFFFFFFFF]
NULL = 0
FINDING = ["DVSState_SwitchFindByAlias", "DVS_SwitchId", "DVS_ClassName", "DVSData_Name"]


def statuses_of(operation):
    """What an operation that refuses returns: one of several statuses, or the one null pointer of those that find.
    Nobody can refuse to take a value back."""
    if operation == "DVSHCK_DataFree":
        return []
    return [NULL] if operation in FINDING else STATUSES


def calls_that_may_be_refused(calls):
    """Of each recorded call: its operation, which call of that operation it is, and a status."""
    operations = [call.operation for call in calls]
    for i, operation in enumerate(operations):
        for status in statuses_of(operation):
            yield operation, operations[: i + 1].count(operation), status
