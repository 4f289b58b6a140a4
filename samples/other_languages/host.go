// A host in Go: both calls, guarded. Build it with GOOS=windows GOARCH=amd64, with the two DLLs beside the program.
// A test compares the declarations of this file with guarded_calls.h and publisher.h, which say what they mean.
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
	nothingReported  = 0
	reported         = 1
	untrustedAddress = 5
	messageWithheld  = 6
	publisherTrusted = 100
)

type guardedCall struct {
	size           uint32
	languageId     int32
	productName    *uint16
	productVersion *uint16
	apiKey         *uint16
	text           *uint16
	textCapacity   uint32
	resultCode     uint32
	isTextCut      uint32
	options        uint32
	trustedHosts   *uint16
}

var program, _ = os.Executable()
var guard = syscall.NewLazyDLL(filepath.Join(filepath.Dir(program), "ProductServicesGuard.dll"))
var guardedCheckForUpdates = guard.NewProc("GuardedCheckForUpdates") // call *guardedCall
var guardedUpgrade = guard.NewProc("GuardedUpgrade")                 // call *guardedCall
var useWindowsProxy = guard.NewProc("UseWindowsProxy")               // serviceAddress, text *uint16; capacity uint32
var verifyPublisher = guard.NewProc("VerifyPublisher")               // path, publisher, text *uint16; capacity uint32

var text [65536]uint16

func describe(function *syscall.LazyProc, call *guardedCall) string {
	outcome, _, _ := function.Call(uintptr(unsafe.Pointer(call)))
	said := syscall.UTF16ToString(text[:])
	switch uint32(outcome) {
	case nothingReported:
		return "nothing was reported"
	case reported: // with 200 a trusted address to download from
		return fmt.Sprint(call.resultCode, ": ", said)
	case untrustedAddress:
		return "not to be opened: " + said
	case messageWithheld:
		return "not shown, since the check is quiet: " + said
	}
	return "error: " + said
}

func main() {
	runtime.LockOSThread() // a window belongs to the thread that made it
	utf16 := func(text string) *uint16 { pointer, _ := syscall.UTF16PtrFromString(text); return pointer }
	call := guardedCall{languageId: 120, productName: utf16("Example Draft"), productVersion: utf16("2026.1"),
		apiKey: utf16("draft20-7k2m9q-x4v8p1w"), text: &text[0], textCapacity: uint32(len(text)),
		trustedHosts: utf16("localhost:18443")}
	call.size = uint32(unsafe.Sizeof(call))
	fmt.Println("CheckForUpdates:", describe(guardedCheckForUpdates, &call))
	fmt.Println("Upgrade:", describe(guardedUpgrade, &call))
}
