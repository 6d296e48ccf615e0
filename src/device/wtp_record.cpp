// SPDX-License-Identifier: MIT
#include "device/wtp_record.h"

void append_wtp(WtpList &list, WtpRecord *record)
{
    (list.head == nullptr ? list.head : list.tail->next) = record;
    list.tail = record;
}

void free_wtp_list(WtpList &list)
{
    list.head = list.tail = nullptr;
    list.memory.clear();
}
