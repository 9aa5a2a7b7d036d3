// SPDX-License-Identifier: Apache-2.0

// Reads Android.bp files as a device's build does: Blueprint parses them, and Soong's own module
// types say which properties there are. Prints the modules as JSON, or one line for each mistake.
//
// usage: orvo_blueprint FILE...
package main

import (
	"encoding/json"
	"fmt"
	"os"
	"path/filepath"
	"strings"

	"android/soong/android"
	_ "android/soong/cc"
	_ "android/soong/etc"
	_ "android/soong/genrule"

	"github.com/google/blueprint"
	"github.com/google/blueprint/parser"
)

type module struct {
	File       string                 `json:"file"`
	Line       int                    `json:"line"`
	Type       string                 `json:"type"`
	Properties map[string]interface{} `json:"properties"`
}

// value turns an evaluated expression into what JSON knows.
func value(expression parser.Expression) interface{} {
	switch e := expression.Eval().(type) {
	case *parser.String:
		return e.Value
	case *parser.Bool:
		return e.Value
	case *parser.Int64:
		return e.Value
	case *parser.List:
		values := []interface{}{}
		for _, item := range e.Values {
			values = append(values, value(item))
		}
		return values
	case *parser.Map:
		return properties(e.Properties)
	}
	return nil
}

func properties(list []*parser.Property) map[string]interface{} {
	values := map[string]interface{}{}
	for _, property := range list {
		values[property.Name] = value(property.Value)
	}
	return values
}

// read gives the modules of one file, and what is wrong with it.
func read(path string, factories map[string]blueprint.ModuleFactory) ([]module, []error) {
	text, err := os.ReadFile(path)
	if err != nil {
		return nil, []error{err}
	}
	file, errs := parser.ParseAndEval(path, strings.NewReader(string(text)), parser.NewScope(nil))
	if len(errs) > 0 {
		return nil, errs
	}

	var modules []module
	for _, definition := range file.Defs {
		m, ok := definition.(*parser.Module)
		if !ok {
			// Soong's check of types and properties takes modules only.
			return nil, []error{fmt.Errorf("%s: variables are not checked, use a defaults module",
				definition.Pos())}
		}
		modules = append(modules,
			module{filepath.Clean(path), m.TypePos.Line, m.Type, properties(m.Properties)})
	}
	return modules, blueprint.CheckBlueprintSyntax(factories, path, string(text))
}

func main() {
	factories := map[string]blueprint.ModuleFactory{}
	for name, factory := range android.ModuleTypeFactories() {
		factories[name] = android.ModuleFactoryAdaptor(factory)
	}

	all := []module{}
	failed := false
	for _, path := range os.Args[1:] {
		modules, errs := read(path, factories)
		for _, err := range errs {
			fmt.Fprintln(os.Stderr, err)
			failed = true
		}
		all = append(all, modules...)
	}
	if failed {
		os.Exit(1)
	}
	encoder := json.NewEncoder(os.Stdout)
	encoder.SetIndent("", "  ")
	if err := encoder.Encode(all); err != nil {
		fmt.Fprintln(os.Stderr, err)
		os.Exit(1)
	}
}
