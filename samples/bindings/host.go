// A host in Go: both calls, guarded. Build it with GOOS=windows GOARCH=amd64, with ProductServicesGuard.dll in its
// folder. The declarations are those of guarded_calls.h and publisher.h, which describe them.
package main

import (
	"fmt"
	"os"
	"path/filepath"
	"runtime"
	"syscall"
	"unsafe"
)

const (
	outcomeNewerRelease         = 1
	outcomeUpToDate             = 2
	outcomeBrowserOpened        = 3
	outcomeUserQuit             = 4
	outcomeUnreachable          = 9
	outcomeTimedOut             = 10
	outcomeCancelled            = 11
	outcomeUntrustedCertificate = 12
	outcomeUntrustedAddress     = 13
	optionQuiet                 = 1
	optionSystemProxy           = 8
	publisherTrusted            = 100
	languageEn                  = 120
)

type guardedCallParams struct {
	size               uint32
	languageId         int32
	productName        *uint16
	productVersion     *uint16
	apiKey             *uint16
	trustedHosts       *uint16
	options            uint32
	timeLimitMs        uint32
	cancelFlag         *uint32
	resultText         *uint16
	resultTextCapacity uint32
	resultCode         uint32
	isTextTruncated    uint32
	reserved           uint32
}

var program, _ = os.Executable()
var guard = syscall.NewLazyDLL(filepath.Join(filepath.Dir(program), "ProductServicesGuard.dll"))
var guardedCheckForUpdates = guard.NewProc("GuardedCheckForUpdates") // params *guardedCallParams
var guardedUpgrade = guard.NewProc("GuardedUpgrade")                 // params *guardedCallParams
var verifyPublisher = guard.NewProc("VerifyPublisher")               // path, publisher, text *uint16; capacity uint32

var isEnding uint32

func call(function *syscall.LazyProc, options uint32) string {
	utf16 := func(text string) *uint16 { pointer, _ := syscall.UTF16PtrFromString(text); return pointer }
	text := make([]uint16, 4096)
	params := guardedCallParams{languageId: languageEn, productName: utf16("Example Draft"),
		productVersion: utf16("2026.1"), apiKey: utf16("draft20-7k2m9q-x4v8p1w"),
		trustedHosts: utf16("localhost:18443"), options: options | optionSystemProxy, timeLimitMs: 15000,
		cancelFlag: &isEnding, resultText: &text[0], resultTextCapacity: uint32(len(text))}
	params.size = uint32(unsafe.Sizeof(params))
	outcome, _, _ := function.Call(uintptr(unsafe.Pointer(&params)))
	return describe(uint32(outcome), syscall.UTF16ToString(text))
}

func describe(outcome uint32, text string) string {
	switch outcome {
	case outcomeNewerRelease: // the URL is https and on a trusted host, so it may be opened
		return "a newer release is at " + text
	case outcomeUpToDate:
		return "up to date"
	case outcomeBrowserOpened:
		return "the browser shows the purchase page"
	case outcomeUserQuit:
		return "left by the user"
	case outcomeUntrustedCertificate, outcomeUntrustedAddress:
		return "not secure, ask your administrator: " + text
	case outcomeUnreachable, outcomeTimedOut:
		return "no connection, try again later: " + text
	case outcomeCancelled:
		return "cancelled"
	}
	return fmt.Sprintf("failed with outcome %d: %s", outcome, text)
}

func main() {
	runtime.LockOSThread() // a window belongs to the thread that created it

	checked := make(chan string)
	go func() {
		runtime.LockOSThread()
		checked <- call(guardedCheckForUpdates, optionQuiet)
	}()
	// The host's window is open here. When it is closed, atomic.StoreUint32(&isEnding, 1) ends a check that is still
	// running.
	fmt.Println("CheckForUpdates:", <-checked)

	fmt.Println("Upgrade:", call(guardedUpgrade, 0))
}
