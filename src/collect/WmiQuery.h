// One property of one WMI class of the local machine, as text.
#pragma once

#include <functional>
#include <string>

#include "w32/Log.h"  // WriteLog, where the query's failures go

// Reads `propertyName` of every instance of `className` in ROOT\CIMV2 and
// returns the last instance's value; empty on any failure, when there is no
// instance, or when the value is null or not a string. Failures are logged
// with WriteLog, never thrown; only running out of memory for a COM string
// throws w32::ComError(E_OUTOFMEMORY).
std::wstring QueryWmiProperty(std::wstring className, std::wstring propertyName);

// QueryWmiProperty from a thread of any apartment. A thread that has joined a
// single-threaded apartment cannot join the multithreaded one, and the
// window's rich edit control makes the user-interface thread join one; the
// query then runs on a short-lived thread of its own while the caller waits.
std::wstring QueryWmiPropertyFromAnyThread(std::wstring className, std::wstring propertyName);

// What QueryWmiPropertyFromAnyThread does with its query: `call` runs on the
// calling thread unless that thread is in a single-threaded apartment, then
// on a short-lived thread of its own; an exception it throws reaches the
// caller, never unwinds out of that thread.
std::wstring CallInMultithreadedApartment(const std::function<std::wstring()>& call);

// The same in another namespace: the report only reads ROOT\CIMV2, tests use
// a missing namespace to see a failed connection.
std::wstring QueryWmiPropertyIn(const std::wstring& wmiNamespace, const std::wstring& className,
                                const std::wstring& propertyName);
