// SPDX-License-Identifier: MIT
#include "report/wtp_record.h"

WtpList::~WtpList()
{
    free_wtp_list(*this);
}

void append_wtp(WtpList &list, std::unique_ptr<WtpRecord> record)
{
    WtpRecord *last = record.release();
    (list.head == nullptr ? list.head : list.tail->next) = last;
    list.tail = last;
}

void free_wtp_list(WtpList &list)
{
    while (list.head != nullptr)
        delete std::exchange(list.head, list.head->next);
    list.tail = nullptr;
}
